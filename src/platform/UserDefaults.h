#pragma once

#include <map>
#include <optional>
#include <string>

namespace valdorn {

// Small settings by key, in the user's own domain. Main thread only. Text is UTF-8.
//
// A value is looked for in the user's domain first, then among the registered fallbacks. Writing
// reaches the disk before the call returns; when the disk refuses, the value holds until the
// process ends and nothing is reported.
class UserDefaults {
public:
    UserDefaults() = default;
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;
    virtual ~UserDefaults() = default;

    // The text stored for the key, or its fallback, or nothing. An empty text is a value.
    virtual std::optional<std::string> string(const std::string& key) const = 0;

    // The truth value stored for the key ("true", "1", "yes"); false when there is none or it is
    // something else. Fallbacks are texts only.
    virtual bool boolean(const std::string& key) const = 0;

    // Store a value in the user's domain. Storing an equal value writes nothing.
    virtual void setString(const std::string& key, const std::string& value) = 0;
    virtual void setBoolean(const std::string& key, bool value) = 0;

    // Adds fallbacks, replacing earlier ones of the same key. They live in memory only: they are
    // never written and never override what the user's domain holds.
    virtual void registerFallbacks(const std::map<std::string, std::string>& fallbacks) = 0;
};

}  // namespace valdorn
