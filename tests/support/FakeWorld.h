#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fleet/RunnerRecords.h"
#include "platform/Services.h"
#include "runner/RunnerConfig.h"
#include "runner/RunnerManager.h"
#include "support/FixedBundleResources.h"
#include "support/FixedHostInfo.h"
#include "support/ManualBackgroundQueue.h"
#include "support/MemoryChildLauncher.h"
#include "support/MemoryFileSystem.h"
#include "support/MemoryUserDefaults.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {

// Everything that runners and the fleet see of the outside, under a test's hand: the home folder
// is /home/ada and empty, the clock stands still.
struct FakeWorld {
    static constexpr char supportFolder[] = "/home/ada/Library/Application Support/Valdorn";

    VirtualMainQueue queue;
    ManualBackgroundQueue background;
    MemoryChildLauncher launcher;
    MemoryFileSystem files;
    MemoryUserDefaults defaults;
    FixedBundleResources resources;
    FixedHostInfo host;

    Services services() { return {queue, background, launcher, files, defaults, resources, host}; }

    // A record with the folder "runners/<id>".
    static RunnerConfig record(const std::string& id) {
        return {id, "name of " + id, "http://gitea.test", "macos", "", false};
    }

    static std::string dataFolder(const std::string& id) {
        return std::string(supportFolder) + "/runners/" + id;
    }

    // The list of runners as the program last left it.
    void saveFleet(const std::vector<RunnerConfig>& records) {
        files.files[std::string(supportFolder) + "/runners.json"] = *RunnerRecords::encode(records);
    }

    // The next run of the registration tool prints this and fails.
    void toolFails(const std::string& output) {
        launcher.runScript.push_back(ScriptedRun{{output}, {ChildExit::Kind::exited, 1}});
    }

    // Puts the registration marker into the folder of the runner with that id.
    void markRegistered(const std::string& id) { files.files[dataFolder(id) + "/.runner"] = ""; }
};

}  // namespace valdorn
