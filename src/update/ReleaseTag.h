#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace valdorn {

// The "tag_name" of a release, as the service's JSON gives it: the text at the top level under that
// name, as it is, the last one if there are several. Nothing when that is no text, or the bytes are
// no JSON object. Pure; any thread; no input, however deeply nested, costs more than a few times its
// own size.
std::optional<std::string> releaseTag(std::string_view json);

}  // namespace valdorn
