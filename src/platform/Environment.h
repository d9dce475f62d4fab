#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// What stands in an environment ("NAME=value" each). Pure; any thread.
namespace Environment {

// The value of the variable; one that is set to nothing counts as not set.
std::optional<std::string> value(const std::vector<std::string>& environment,
                                 std::string_view variable);

// The locale by which characters are to be treated, as the environment names it ("tr_TR.UTF-8");
// empty when it names none.
std::string characterLocale(const std::vector<std::string>& environment);

}  // namespace Environment

}  // namespace valdorn
