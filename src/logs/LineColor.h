#pragma once

#include <optional>
#include <string_view>

#include "platform/SystemColor.h"

namespace valdorn {

// The colour that a line of a log stands out in: red for errors ("level=error" anywhere, or "Error:"
// at the start), orange for warnings ("level=warning" anywhere), none for the text's own. Case
// counts. The `error` level filter knows only the first form: an "Error:" line is red and yet no line
// of that level. Pure; any thread.
std::optional<SystemColor> lineColor(std::string_view line);

}  // namespace valdorn
