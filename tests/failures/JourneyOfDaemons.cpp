#include <algorithm>
#include <system_error>

#include <signal.h>

#include "failures/BusStandin.h"
#include "failures/Journey.h"
#include "failures/Seen.h"
#include "platform/posix/SessionBusSocket.h"
#include "runner/RunnerStatus.h"

namespace valdorn {

using failing::Call;
using failing::Quiet;

void Journey::begin() {
    try {
        now_ = std::make_unique<Instance>();
    } catch (const std::system_error&) {
        expect(false, "starts");
        isOver_ = true;
    }
    if (now_ && now_->isHeldByAnother()) {
        expect(false, "holds the lock");
        isOver_ = true;
    }
    const HostSources host = HostSources::ofThisComputer();
    fact("name: " + host.hostName());
    fact("account: " + host.accountHome());
    if (!isOver_) {
        expect(now_->host.homeFolder() == home_.path(), "knows its home");
        expect(!now_->executable.empty(), "knows its executable");
        expect(now_->ledger.has_value(), "has a ledger");
    }
    if (!isOver_ && now_->ledger) {
        const auto outcome = now_->ledger->endLeftovers(std::chrono::seconds(10));
        expect(outcome.asked == 1 && outcome.ended == 1, "ends what was left behind");
    }
    checkLeftover();
    seen::waitFor(leftBehind_);
    missAStream();
}

void Journey::load() {
    now_->load();
    const auto& runners = now_->store->runners();
    expect(runners.size() == 2 && runners[1]->id() == "b", "finds all runners");
    if (runners.empty() || !legacy()->config().legacy)
        wrong("no legacy runner");
}

void Journey::run() {
    now_->store->startAllRegistered();
    for (const auto& runner : now_->store->runners())
        settle(runner);
    fact(statusOf(legacy()));
    if (now_->store->runners().size() > 1 &&
        now_->store->runners()[1]->status() != RunnerStatus::notRegistered)
        wrong("the other runner is not unregistered");
    bringUp(legacy());
    endAbandoned();
}

// One that could not be killed goes on, and nobody waits for it.
void Journey::endAbandoned() const {
    if (!mayBeHurt({Call::kill}) || !failing::hasFired(0))
        return;
    if (!seen::soon([this] { return seen::launches(support()).size() > 1; }))
        throw Stuck("nobody is abandoned");
    const auto noted = notedDaemons();
    for (const pid_t pid : seen::launches(support())) {
        if (std::find(noted.begin(), noted.end(), pid) != noted.end())
            continue;
        seen::signal(pid, SIGKILL);
        seen::waitFor(pid);
    }
}

void Journey::die() {
    const pid_t daemon = seen::daemonIn(support());
    if (daemon < 0)
        throw Stuck("no daemon runs");
    died_.push_back(daemon);
    seen::signal(daemon, SIGUSR1);
    await("a relaunch that is due", [this] { return now_->queue.armed() > 0; });
    if (seen::isChild(daemon))
        wrong("a zombie");
    fact(statusOf(legacy()));
    now_->queue.advance(std::chrono::seconds(5));
    settle(legacy());
    fact(statusOf(legacy()));
    if (legacy()->status() == RunnerStatus::stopped && now_->queue.armed() > 0)
        wrong("a failed launch is tried again");
    bringUp(legacy());
}

// One try, until its outcome is known.
void Journey::tryToRegister() {
    now_->form->setToken("token");
    now_->form->doRegister(second_);
    // The task of a thread that could not be had waits for the next one.
    if (now_->background.threads() == 0)
        now_->background.run([] {});
    await("the registration", [this] { return !now_->form->busy(); });
    if (now_->form->message().value_or("").empty())
        wrong("no outcome is told");
}

void Journey::registerRunner() {
    second_ = now_->store->add("second");
    RunnerConfig record = second_->config();
    record.instanceURL = "http://x.invalid";
    second_->setConfig(record);
    tryToRegister();
    expect(now_->form->ok(), "is registered");
    fact(now_->form->message().value_or(""));
    if (now_->form->ok() != second_->isRegistered() && (!hasFailed() || hadFailed_))
        wrong("says what is not so");
    if (!now_->form->ok()) {
        tryToRegister();
        if (!now_->form->ok())
            wrong("cannot be registered after all");
    }
    settle(second_);
    bringUp(second_);
    if (!mayBeHurt() && !doesLedgerAgree())
        wrong("the ledger does not agree");
}

void Journey::greetBus() {
    using namespace SessionBusSocket;
    const BusStandin bus(home_ / "bus");
    const State state = ask("unix:path=" + (home_ / "bus"), std::chrono::seconds(10));
    expect(state == State::open, "is let in");
}

void Journey::stop() {
    for (RunnerRef runner : {legacy(), second_}) {
        runner->stop();
        now_->queue.runPosted();
        if (runner->status() != RunnerStatus::stopped || runner->startedAt())
            wrong("a runner that was stopped is not");
        awaitEndOf(seen::launches(runner->dataDir()));
        if (runner->status() != RunnerStatus::stopped)
            wrong("a runner that was stopped has come back");
    }
    // What tells of an end may just be coming.
    now_->queue.runPosted();
    if (now_->queue.armed() != 0)
        wrong("something is still armed");
}

// Those that could not be asked to end are ended here.
void Journey::awaitEndOf(const std::vector<pid_t>& daemons) {
    for (const pid_t pid : daemons) {
        if (mayBeHurt({Call::pidfdSendSignal}) && hasFailed())
            seen::signal(pid, SIGTERM);
        await("the end of a daemon", [pid] { return !seen::isChild(pid); });
    }
}

void Journey::runAgain() {
    for (RunnerRef runner : {legacy(), second_})
        bringUp(runner);
    expect(!now_->ledger || doesLedgerAgree(), "the ledger agrees");
}

void Journey::quit() {
    const auto runner = legacy();
    now_->quit();
    now_->queue.runPosted();
    if (runner->status() != RunnerStatus::stopped)
        wrong("a runner that was stopped is not");
    awaitEndOf(seen::launches(runner->dataDir()));
    const auto noted = now_->ledger ? notedDaemons() : std::vector<pid_t>{};
    expect(std::count(noted.begin(), noted.end(), leftBehind_) ==
               static_cast<std::ptrdiff_t>(noted.size()),
           "the ledger is empty");
    runner->start();
    now_->queue.runPosted();
    if (runner->isRunning())
        wrong("a launch while quitting");
    second_.reset();
    now_.reset();
    if (seen::hasAnyChild())
        wrong("a child is left");
}

void Journey::startAndQuitInHaste() {
    try {
        now_ = std::make_unique<Instance>();
    } catch (const std::system_error&) {
        expect(false, "starts");
        isOver_ = true;
        return;
    }
    expect(!now_->isHeldByAnother(), "holds the lock");
    if (now_->ledger && now_->ledger->endLeftovers(std::chrono::seconds(1)).asked != 0)
        wrong("asks somebody who was not left behind");
    now_->load();
    bringUp(legacy());
    const pid_t daemon = seen::daemonIn(support());
    now_->quit();
    now_.reset();
    if (mayBeHurt({Call::pidfdSendSignal}) && hasFailed())
        seen::signal(daemon, SIGTERM);
    // It had to say that it ends, and somebody took it.
    expect(!seen::isChild(daemon) || seen::waitFor(daemon) == 0,
           "what it says at its end is taken");
    // Whoever took it ends with it.
    if (!seen::waitForAll())
        wrong("somebody goes on for nobody");
}

bool Journey::isUp(RunnerRef runner) const {
    const Quiet quiet;
    return runner->status() == RunnerStatus::connected && runner->isRunning();
}

std::string Journey::statusOf(RunnerRef runner) {
    return std::string(rawValue(runner->status()));
}

void Journey::settle(RunnerRef runner) {
    await("a runner that starts", [&] { return runner->status() != RunnerStatus::starting; });
    const bool isConnected = runner->status() == RunnerStatus::connected;
    const Quiet quiet;
    if (isConnected != runner->isRunning())
        wrong("the status is " + statusOf(runner) + ", which is not so");
}

void Journey::bringUp(RunnerRef runner) {
    if (isUp(runner))
        return;
    runner->start();
    settle(runner);
    expect(isUp(runner), "comes up");
    if (isUp(runner))
        return;
    if (now_->queue.armed() > 0)
        wrong("a failed launch is tried again");
    runner->start();
    settle(runner);
    if (!isUp(runner))
        wrong("does not come up after all");
}

}  // namespace valdorn
