#pragma once

#include <optional>
#include <string>
#include <vector>

namespace valdorn {

class LoginItemRegistry;
class SystemLog;

// The program's use as a small command-line tool. Main thread only.
namespace CommandLine {

// Acts on the first of "--login-status", "--enable-login" and "--disable-login" that occurs
// anywhere among the arguments (argument 0 included) and returns the one word to print: what the
// registry says afterwards. Nothing when none of them occurs: then the program is to start.
std::optional<std::string> answer(const std::vector<std::string>& arguments,
                                  LoginItemRegistry& registry, SystemLog& log);

}  // namespace CommandLine

}  // namespace valdorn
