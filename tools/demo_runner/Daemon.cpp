#include "Daemon.h"

#include <stdexcept>
#include <utility>

namespace valdorn::demo {
namespace {

// A server in the local network, whatever the registered address: the kernel's texts name the
// address that it could not reach.
constexpr const char* serverAddress = "192.168.1.20:3000";

Script orOrdinaryLife(Script script) {
    return script.daemonSteps.empty() ? ordinaryLife() : std::move(script);
}

}  // namespace

Daemon::Daemon(Level level, Script script, Output& output, StopSignals& signals)
    : script_(orOrdinaryLife(std::move(script))),
      signals_(signals),
      log_(output, level),
      player_(output, signals),
      jobs_(log_, signals) {}

int Daemon::run() {
    try {
        runner_ = RunnerFile::load();
    } catch (const std::runtime_error& error) {
        start();
        log_.entry({Level::error,
                    "registration file not found, please register the runner first",
                    {"func5", "daemon.go:46"}});
        log_.fatal(error.what());
        return 1;
    }
    if (const auto code = playScript()) {
        return *code;
    }
    signals_.waitForStop();
    return stop();
}

// Returns an exit code when a step demands it; nothing at the end, or when a stop is requested.
std::optional<int> Daemon::playScript() {
    for (std::size_t index = 0; index < script_.daemonSteps.size();) {
        const Step& step = script_.daemonSteps.at(index);
        index = std::holds_alternative<Loop>(step) ? loopStart(index) : index + 1;
        if (const auto code = play(step)) {
            return code;
        }
        if (signals_.isStopRequested()) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

// A daemon declares itself once, so the loop goes on behind the last time it did.
std::size_t Daemon::loopStart(std::size_t index) const {
    while (index > 0 && !std::holds_alternative<Declare>(script_.daemonSteps.at(index - 1))) {
        --index;
    }
    return index;
}

std::optional<int> Daemon::play(const Step& step) {
    if (std::holds_alternative<Start>(step)) {
        start();
    } else if (std::holds_alternative<Declare>(step)) {
        declare();
    } else if (const auto* job = std::get_if<Job>(&step)) {
        jobs_.play(*job, runner_.address, [this] { beginStop(); });
    } else if (const auto* failure = std::get_if<FetchFailure>(&step)) {
        failToFetch(failure->reason);
    } else if (const auto* pad = std::get_if<Pad>(&step)) {
        jobs_.setPadding(pad->width);
    } else {
        return player_.play(step);
    }
    return std::nullopt;
}

void Daemon::start() {
    if (log_.isDebug()) {
        log_.entry({Level::info,
                    "Log level debug requested, setting up report caller for further debugging",
                    {"initLogging", "daemon.go:235"}});
        log_.entry({Level::info, "log level set to debug", {"initLogging", "daemon.go:239"}});
    }
    log_.entry({Level::info, "Starting runner daemon", {"func5", "daemon.go:42"}});
    updateLabels();
}

// A label without a schema means the host.
void Daemon::updateLabels() {
    bool changed = false;
    for (std::string& label : runner_.labels) {
        if (label.find(':') == std::string::npos) {
            label += ":host";
            changed = true;
        }
    }
    if (changed) {
        log_.entry({Level::info,
                    "labels updated to: " + goList(runner_.labels),
                    {"func5", "daemon.go:127"}});
    }
}

void Daemon::declare() {
    log_.entry({Level::info,
                "runner: " + runner_.name + ", with version: v1.0.8, with labels: " +
                    runner_.declaredLabels() + ", declare successfully",
                {"func5", "daemon.go:148"}});
}

void Daemon::failToFetch(const std::string& reason) {
    LogLine line(Level::error, "failed to fetch task", {"fetchTask", "poller.go:267"});
    line.error("unavailable: dial tcp " + std::string(serverAddress) + ": connect: " + reason);
    log_.entry(line);
}

void Daemon::beginStop() {
    stopBegun_ = true;
    log_.entry({Level::info,
                "runner: " + runner_.name +
                    " shutdown initiated, waiting 0s for running jobs to complete before shutting "
                    "down",
                {"func5", "daemon.go:181"}});
}

int Daemon::stop() {
    if (!stopBegun_) {
        beginStop();
    }
    log_.entry({Level::warning,
                "runner: " + runner_.name + " cancelled in progress jobs during shutdown",
                {"func5", "daemon.go:188"}});
    return 0;
}

}  // namespace valdorn::demo
