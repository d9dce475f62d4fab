#include "logs/LineColor.h"

#include "logs/LevelFilter.h"

namespace valdorn {

std::optional<SystemColor> lineColor(std::string_view line) {
    if (passes(LevelFilter::error, line) || line.starts_with("Error:"))
        return SystemColor::red;
    if (passes(LevelFilter::warning, line))
        return SystemColor::orange;
    return std::nullopt;
}

}  // namespace valdorn
