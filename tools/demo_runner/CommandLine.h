#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "LogLine.h"
#include "Registration.h"

namespace valdorn::demo {

// Arguments that act_runner would refuse; what() is its text behind "Error: ".
class CommandLineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What the arguments say. A value.
struct CommandLine {
    enum class Command { help, version, registration, daemon };
    Command command = Command::help;
    RegistrationRequest request;  // of register
    std::string configPath;       // empty: none given

    // `arguments` without the program's own name. Flags as `--name value` or `--name=value`.
    // Throws CommandLineError.
    static CommandLine parse(const std::vector<std::string>& arguments);
};

// The log level that a configuration file asks for (log: level: in YAML): debug, or info for all
// others and without a file. Throws CommandLineError when the file cannot be read.
Level readLevel(const std::string& configPath);

}  // namespace valdorn::demo
