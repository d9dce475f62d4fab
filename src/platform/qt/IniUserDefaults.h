#pragma once

#include <QSettings>
#include <map>
#include <optional>
#include <string>

#include "platform/UserDefaults.h"

namespace valdorn {

class FileSystem;

// User defaults in an INI file that people may edit by hand. Each write is on the disk when the
// call returns, merged with what somebody else has written meanwhile. Nobody is waited for. A byte
// order mark that begins a text is lost when the file is read, by Qt (6.4).
class IniUserDefaults : public UserDefaults {
public:
    // The file's absolute path. The file and its folder, which `files` closes to others, are made by
    // the first write; `files` is borrowed and outlives this. Where something stands that is no file
    // (a named pipe would be waited for) or a file that nobody has written by hand or by us (over 64
    // KiB, or with values of types of Qt's), it is overlooked and left as it is, and values hold in
    // memory only; so they do where the path is not UTF-8. One that is set while somebody keeps the
    // file's lock ("<path>.lock") is written by the next set that finds it free, of any key, and of
    // the same value too.
    IniUserDefaults(FileSystem& files, const std::string& path);

    std::optional<std::string> string(const std::string& key) const override;
    bool boolean(const std::string& key) const override;
    void setString(const std::string& key, const std::string& value) override;
    void setBoolean(const std::string& key, bool value) override;
    void registerFallbacks(const std::map<std::string, std::string>& fallbacks) override;

private:
    std::optional<QString> stored(const std::string& key) const;
    bool canBeWritten() const;
    void store(const std::string& key, const QString& value);

    FileSystem& files_;
    const std::string folder_;
    std::optional<QSettings> settings_;   // nothing where there can be no file
    std::map<QString, QString> unsaved_;  // set while it could not be written
    std::map<std::string, std::string> fallbacks_;
};

}  // namespace valdorn
