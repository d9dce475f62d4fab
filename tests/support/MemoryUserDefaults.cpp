#include "support/MemoryUserDefaults.h"

namespace valdorn {

std::optional<std::string> MemoryUserDefaults::string(const std::string& key) const {
    if (const auto stored = strings.find(key); stored != strings.end())
        return stored->second;
    if (const auto stored = booleans.find(key); stored != booleans.end())
        return stored->second ? "true" : "false";
    if (const auto fallback = fallbacks.find(key); fallback != fallbacks.end())
        return fallback->second;
    return std::nullopt;
}

bool MemoryUserDefaults::boolean(const std::string& key) const {
    if (const auto stored = booleans.find(key); stored != booleans.end())
        return stored->second;
    const auto stored = strings.find(key);
    return stored != strings.end() &&
           (stored->second == "true" || stored->second == "1" || stored->second == "yes");
}

void MemoryUserDefaults::setString(const std::string& key, const std::string& value) {
    if (const auto stored = strings.find(key); stored != strings.end() && stored->second == value)
        return;
    booleans.erase(key);
    strings[key] = value;
    wrote();
}

void MemoryUserDefaults::setBoolean(const std::string& key, bool value) {
    if (const auto stored = booleans.find(key); stored != booleans.end() && stored->second == value)
        return;
    strings.erase(key);
    booleans[key] = value;
    wrote();
}

void MemoryUserDefaults::registerFallbacks(const std::map<std::string, std::string>& added) {
    for (const auto& [key, value] : added)
        fallbacks[key] = value;
}

}  // namespace valdorn
