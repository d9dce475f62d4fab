#include "platform/Environment.h"

namespace valdorn::Environment {

std::optional<std::string> value(const std::vector<std::string>& environment,
                                 std::string_view variable) {
    const std::string start = std::string(variable) + "=";
    for (const std::string& entry : environment) {
        if (entry.starts_with(start) && entry.size() > start.size())
            return entry.substr(start.size());
    }
    return std::nullopt;
}

std::string characterLocale(const std::vector<std::string>& environment) {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (auto locale = value(environment, variable))
            return *locale;
    }
    return {};
}

}  // namespace valdorn::Environment
