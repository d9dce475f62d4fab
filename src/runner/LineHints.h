#pragma once

#include <string_view>

namespace valdorn {

// Lines of jobs and of debugging are nearly all there is, and say nothing about the runner. Looking
// for each text in each of them costs four times what everything else about a line does.
namespace LineHints {

// False only where a line holds no text that tells a version or an event; true where it may hold
// one, which is to be looked at closely then. Says nothing about labels of jobs. Pure; any thread.
bool mayTell(std::string_view line);

}  // namespace LineHints

}  // namespace valdorn
