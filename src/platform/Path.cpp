#include "platform/Path.h"

namespace valdorn {

std::string appendPathComponent(std::string_view folder, std::string_view component) {
    std::string joined;
    joined.reserve(folder.size() + 1 + component.size());
    const auto append = [&joined](std::string_view part) {
        for (const char c : part) {
            if (c != '/' || !joined.ends_with('/'))
                joined += c;
        }
    };
    append(folder);
    append("/");
    append(component);
    if (joined.size() > 1 && joined.ends_with('/'))
        joined.pop_back();
    return joined;
}

}  // namespace valdorn
