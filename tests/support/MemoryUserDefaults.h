#pragma once

#include <map>
#include <string>

#include "platform/UserDefaults.h"

namespace valdorn {

// User defaults in memory; tests set and look at the maps. One thread only.
class MemoryUserDefaults : public UserDefaults {
public:
    std::map<std::string, std::string> strings;  // the user's domain: a key is in one map only
    std::map<std::string, bool> booleans;
    std::map<std::string, std::string> fallbacks;
    int writes = 0;            // writes that reached the disk
    bool diskRefuses = false;  // values then hold, but no write reaches the disk

    std::optional<std::string> string(const std::string& key) const override;
    bool boolean(const std::string& key) const override;
    void setString(const std::string& key, const std::string& value) override;
    void setBoolean(const std::string& key, bool value) override;
    void registerFallbacks(const std::map<std::string, std::string>& added) override;

private:
    void wrote() { writes += diskRefuses ? 0 : 1; }
};

}  // namespace valdorn
