#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

#include "CommandLine.h"
#include "Daemon.h"
#include "Registration.h"
#include "Script.h"

namespace {

using namespace valdorn::demo;

constexpr int usageError = 2;

void printHelp() {
    const std::string_view steps = stepHelp();
    std::printf(
        "Stands in for act_runner in demonstrations and tests\n\n"
        "Usage:\n"
        "  demo_runner register --no-interactive --instance URL --token T --name N --labels L\n"
        "  demo_runner daemon [--config FILE]\n"
        "  demo_runner --version\n\n"
        "Without a script the daemon runs a short job now and then, and register accepts every\n"
        "token but \"bad\". A script is the file that VALDORN_DEMO_SCRIPT names, or else\n"
        "demo_runner.script in the working folder.\n\n%.*s",
        static_cast<int>(steps.size()), steps.data());
}

int run(const CommandLine& line) {
    Output output;
    StopSignals signals;
    if (line.command == CommandLine::Command::daemon) {
        return Daemon(readLevel(line.configPath), loadScript(), output, signals).run();
    }
    return Registration(line.request, loadScript(), output, signals).run();
}

int runCommand(const CommandLine& line) {
    switch (line.command) {
        case CommandLine::Command::help:
            printHelp();
            return 0;
        case CommandLine::Command::version:
            std::puts("gitea-runner version v1.0.8 (demo)");
            return 0;
        default:
            return run(line);
    }
}

}  // namespace

int main(int count, char** words) {
    try {
        return runCommand(CommandLine::parse({words + 1, words + count}));
    } catch (const CommandLineError& error) {
        std::fprintf(stderr, "Error: %s\n", error.what());
        return 1;
    } catch (const ScriptError& error) {
        std::fprintf(stderr, "demo_runner: %s\n", error.what());
        return usageError;
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "demo_runner: %s\n", error.what());
        return 1;
    }
}
