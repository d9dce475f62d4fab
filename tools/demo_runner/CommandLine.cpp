#include "CommandLine.h"

#include <fstream>
#include <map>

namespace valdorn::demo {
namespace {

using Flags = std::map<std::string, std::string*>;

constexpr const char* helpFlags[] = {"--help", "-h", "help"};
constexpr const char* versionFlags[] = {"--version", "-v"};

template <std::size_t N>
bool isOneOf(const std::string& word, const char* const (&words)[N]) {
    for (const char* each : words) {
        if (word == each) {
            return true;
        }
    }
    return false;
}

void parseFlags(const std::vector<std::string>& arguments, const Flags& flags) {
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (name.substr(0, 1) != "-") {
            throw CommandLineError("accepts at most 0 arg(s), received 1");
        }
        const auto flag = flags.find(name);
        if (flag == flags.end()) {
            throw CommandLineError("unknown flag: " + name);
        }
        if (flag->second == nullptr) {
            continue;
        }
        if (equals == std::string::npos && index + 1 == arguments.size()) {
            throw CommandLineError("flag needs an argument: " + name);
        }
        *flag->second =
            equals == std::string::npos ? arguments[++index] : argument.substr(equals + 1);
    }
}

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\r\"'";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string::npos
               ? ""
               : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

}  // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments) {
    CommandLine line;
    if (arguments.empty() || isOneOf(arguments.front(), helpFlags)) {
        return line;
    }
    RegistrationRequest& request = line.request;
    Flags flags = {{"--config", &line.configPath}, {"-c", &line.configPath}};
    const std::string& name = arguments.front();
    if (isOneOf(name, versionFlags)) {
        line.command = Command::version;
    } else if (name == "daemon") {
        line.command = Command::daemon;
    } else if (name == "register") {
        line.command = Command::registration;
        flags.insert({{"--no-interactive", nullptr},
                      {"--instance", &request.instance},
                      {"--token", &request.token},
                      {"--name", &request.name},
                      {"--labels", &request.labels}});
    } else {
        throw CommandLineError("unknown command \"" + name + "\" for \"gitea-runner\"");
    }
    parseFlags(arguments, flags);
    return line;
}

Level readLevel(const std::string& configPath) {
    if (configPath.empty()) {
        return Level::info;
    }
    std::ifstream file(configPath);
    if (!file) {
        throw CommandLineError("invalid configuration: open config file \"" + configPath +
                               "\": open " + configPath + ": no such file or directory");
    }
    bool inLog = false;
    for (std::string line; std::getline(file, line);) {
        if (line.find_first_not_of(" \t") == 0) {
            inLog = line.rfind("log:", 0) == 0;
        }
        const std::string text = trimmed(line);
        if (inLog && text.rfind("level:", 0) == 0) {
            return trimmed(text.substr(6)) == "debug" ? Level::debug : Level::info;
        }
    }
    return Level::info;
}

}  // namespace valdorn::demo
