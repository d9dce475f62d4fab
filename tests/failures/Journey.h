#pragma once

#include <chrono>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "failures/Instance.h"
#include "failures/calls/FailingCalls.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

// What was to be seen in one part of a journey.
struct Chapter {
    std::string name;
    std::vector<std::string> facts;
    bool hasFailed = false;  // a planned failure has come in it or before it
};

struct Story {
    std::vector<Chapter> chapters;
    std::vector<std::string> wrongs;  // what must never be, whatever has failed
    bool hasFailed = false;           // the first planned failure has come
};

// The program hangs: nothing comes any more of what has to come.
struct Stuck : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One life of the program with all that it has to do with the kernel: it starts after a crash that
// has left a daemon behind, runs a runner that prints a lot, dies and is relaunched, follows its
// log, edits a record, registers a second runner, stops, removes, quits, and starts and quits again.
//
// Each chapter ends in the same state, whatever has failed in it: what did not work is tried once
// more, and then has to.
class Journey {
public:
    explicit Journey(std::vector<failing::Fault> faults);
    Journey(const Journey&) = delete;
    Journey& operator=(const Journey&) = delete;
    ~Journey();

    // Once.
    Story tell();

private:
    using RunnerRef = const std::shared_ptr<RunnerManager>&;

    // Far below what the whole journey may take, alarmSeconds.
    static constexpr std::chrono::seconds patience{15};

    void prepareHome();
    void leaveDaemonBehind();
    void live();
    void chapter(const char* name, void (Journey::*part)());

    void begin();
    void load();
    void run();
    void followLog();
    void die();
    void edit();
    void login();
    void registerRunner();
    void greetBus();
    void stop();
    void runAgain();
    void remove();
    void writeLine();
    void quit();
    void startAndQuitInHaste();

    void fact(const std::string& text);
    void fact(const std::string& what, bool isSo);
    void wrong(const std::string& text);
    // For what may be so only when a failure has come in this chapter.
    void expect(bool isAsPlanned, const std::string& what);
    bool hasFailed() const;
    // By a failure that need not go unnoticed; of one of those calls.
    bool mayBeHurt() const;
    bool mayBeHurt(std::initializer_list<failing::Call> calls) const;

    // Lets the program run until it is so.
    template <typename Condition>
    void await(const char* what, const Condition& isSo) {
        if (!now_->queue.runUntil(isSo, patience))
            throw Stuck(what);
    }

    static std::string statusOf(RunnerRef runner);
    bool isUp(RunnerRef runner) const;
    void settle(RunnerRef runner);
    void bringUp(RunnerRef runner);
    void awaitEndOf(const std::vector<pid_t>& daemons);
    bool edited(const std::string& name);
    void tryToRegister();
    void endAbandoned() const;
    void missAStream();
    void removeBelowAFile();
    void checkLeftover();
    std::vector<pid_t> notedDaemons() const;
    bool doesLedgerAgree();
    RunnerRef legacy() const { return now_->store->first(); }
    std::string support() const;

    void checkLog();
    void checkNames();

    const std::vector<failing::Fault> faults_;
    TemporaryFolder home_;
    std::unique_ptr<Instance> now_;
    std::shared_ptr<RunnerManager> second_;
    std::vector<pid_t> died_;
    pid_t leftBehind_ = -1;
    bool isOver_ = false;     // the program could not go on, and has said so
    bool hadFailed_ = false;  // before this chapter
    Story story_;
};

}  // namespace valdorn
