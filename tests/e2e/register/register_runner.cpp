// Registers the first runner of $HOME's fleet as the settings form does, but without a window:
//
//     register_runner INSTANCE NAME LABELS TOKEN
//
// Prints one line, and ends with: ok (0), refused: TEXT (1), launch error: TEXT (2).

#include <cstdio>
#include <string>
#include <variant>

#include "fleet/RunnersStore.h"
#include "platform/Services.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "runner/Config.h"
#include "support/ManualBackgroundQueue.h"
#include "support/MemoryUserDefaults.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {
namespace {

constexpr int argumentCount = 5;
constexpr int usageStatus = 64;

// The real platform but for the clock and the settings, which come from Qt.
struct World {
    VirtualMainQueue mainQueue;
    ManualBackgroundQueue backgroundQueue;
    PosixChildLauncher launcher;
    PosixFileSystem files;
    MemoryUserDefaults defaults;
    InstalledResources resources{executablePath()};
    PosixHostInfo host;

    Services services() {
        return {mainQueue, backgroundQueue, launcher, files, defaults, resources, host};
    }
};

void edit(RunnerManager& runner, const char* instance, const char* name, const char* labels) {
    RunnerConfig record = runner.config();
    record.instanceURL = instance;
    record.name = name;
    record.labels = labels;
    runner.setConfig(record);
    // An edit reaches the disk with the save after its own.
    runner.setConfig(record);
}

int report(const RegistrationOutcome& outcome) {
    if (const auto* refusal = std::get_if<RunnerError>(&outcome)) {
        std::printf("refused: %s\n", refusal->errorDescription.value_or("(no text)").c_str());
        return 1;
    }
    if (const auto* failure = std::get_if<LaunchError>(&outcome)) {
        std::printf("launch error: %s\n", failure->description().c_str());
        return 2;
    }
    std::puts("ok");
    return 0;
}

int registerFirstRunner(char** arguments) {
    World world;
    Config::registerDefaults(world.host, world.defaults);
    const auto store = RunnersStore::create(world.services());
    RunnerManager& runner = *store->runners().front();
    edit(runner, arguments[1], arguments[2], arguments[3]);
    return report(runner.registration(arguments[4]).run());
}

}  // namespace
}  // namespace valdorn

int main(int argc, char** argv) {
    if (argc != valdorn::argumentCount) {
        std::fputs("usage: register_runner INSTANCE NAME LABELS TOKEN\n", stderr);
        return valdorn::usageStatus;
    }
    return valdorn::registerFirstRunner(argv);
}
