#pragma once

#include <chrono>
#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "platform/posix/DaemonLedger.h"
#include "platform/posix/DaemonRecords.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "posix/PosixStage.h"
#include "support/ChildRecorder.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

// A ledger is made anew on the same file where an instance was killed and another one started.
class LedgerStage : public testing::Test {
protected:
    static constexpr std::chrono::seconds longEnough{60};
    static constexpr std::int64_t idOfNobody = 0x3fffffff;  // no kernel counts so far

    ~LedgerStage() override {
        // The id of one that has ended may be another's by now.
        for (const auto& child : children) {
            if (child->isRunning())
                kill(static_cast<pid_t>(child->id()), SIGKILL);
        }
        for (const auto& recorder : recorders)
            EXPECT_TRUE(recorder->waitForRelease());
    }

    ChildProcess& start(const ChildCommand& command) { return startBy(launcher, command); }
    ChildProcess& startHanging() { return start(childCommand("hang")); }

    ChildProcess& startBy(ChildLauncher& by, const ChildCommand& command) {
        recorders.push_back(std::make_unique<ChildRecorder>());
        auto child = by.launch(command, recorders.back()->handlers());
        EXPECT_TRUE(child.ok());
        EXPECT_TRUE(recorders.back()->waitForText("ready"));
        children.push_back(std::move(child.value()));
        return *children.back();
    }

    std::unique_ptr<DaemonLedger> newLedger() {
        return std::make_unique<DaemonLedger>(files, path());
    }

    // What that child writes down at its birth.
    static std::string noteOf(std::int64_t id) {
        const std::ifstream stat("/proc/" + std::to_string(id) + "/stat");
        std::ostringstream text;
        text << bootLine(bootId()) << stat.rdbuf();
        return text.str();
    }

    // What a child has written down that has ended since.
    static std::string noteOfNobody() {
        const std::string heading = bootLine(bootId());
        const std::string own = noteOf(getpid()).substr(heading.size());
        return heading + std::to_string(idOfNobody) + own.substr(own.find(' '));
    }

    std::string path() const { return folder / "ledger"; }

    DaemonRecords written() const {
        const auto text = files.read(path());
        return text ? daemonRecordsIn(text.value()).value() : DaemonRecords{};
    }

    TemporaryFolder folder;
    PosixFileSystem files;
    std::vector<std::unique_ptr<ChildRecorder>> recorders;
    PosixChildLauncher launcher;
    std::vector<std::unique_ptr<ChildProcess>> children;
};

}  // namespace valdorn
