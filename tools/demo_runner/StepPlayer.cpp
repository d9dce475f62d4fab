#include "StepPlayer.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

#include <signal.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

namespace valdorn::demo {
namespace {

// As much as a pipe holds by default: fewer, larger writes would only wait longer.
constexpr std::size_t blockBytes = std::size_t{64} * 1024;

// Makes the blocks of a flood, one after the other.
class FloodSource {
public:
    explicit FloodSource(Flood::Form form) : form_(form), block_(blockBytes, '.') {}

    const std::string& next() {
        if (form_ == Flood::Form::lines) {
            numberLines();
        } else if (form_ == Flood::Form::binary) {
            randomise();
        }
        return block_;
    }

private:
    // Lines of 64 bytes with their number, so that a lost one would be missed.
    void numberLines() {
        constexpr std::size_t lineBytes = 64;
        constexpr std::string_view head = "[Flood/lines]   | line ";
        constexpr std::size_t digits = 12;
        for (std::size_t at = 0; at < blockBytes; at += lineBytes) {
            const std::string number = std::to_string(++lineNumber_);
            block_.replace(at, head.size(), head);
            block_.replace(at + head.size(), digits, digits, '0');
            block_.replace(at + head.size() + digits - number.size(), number.size(), number);
            block_[at + lineBytes - 1] = '\n';
        }
    }

    // A linear congruential generator: the same bytes in every run, of all values.
    void randomise() {
        for (char& byte : block_) {
            state_ = state_ * 6364136223846793005U + 1442695040888963407U;
            byte = static_cast<char>(state_ >> 56U);
        }
    }

    Flood::Form form_;
    std::string block_;
    std::uint64_t lineNumber_ = 0;
    std::uint64_t state_ = 1;
};

// Dies by the signal, leaving no core dump behind.
void dieBy(int signal) {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    ::signal(signal, SIG_DFL);
    raise(signal);
}

// Leaves a process behind that has the same standard output and standard error.
void leaveGrandchild(std::chrono::milliseconds time) {
    const pid_t child = fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        restoreStopSignals();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        const std::chrono::nanoseconds rest = time - seconds;
        const timespec limit{static_cast<time_t>(seconds.count()), rest.count()};
        nanosleep(&limit, nullptr);
        _exit(0);
    }
}

}  // namespace

std::optional<int> StepPlayer::play(const Step& step) {
    if (const auto* exit = std::get_if<Exit>(&step)) {
        return exit->code;
    }
    if (const auto* wait = std::get_if<Wait>(&step)) {
        signals_.wait(wait->time);
    } else if (std::holds_alternative<Hang>(step)) {
        signals_.waitForStop();
    } else if (const auto* text = std::get_if<Print>(&step)) {
        print(*text);
    } else if (const auto* crash = std::get_if<Crash>(&step)) {
        dieBy(crash->signal);
    } else if (std::holds_alternative<IgnoreTerm>(step)) {
        signals_.ignoreFromNowOn();
    } else if (const auto* water = std::get_if<Flood>(&step)) {
        flood(*water);
    } else if (const auto* crlf = std::get_if<Crlf>(&step)) {
        output_.setCrlf(crlf->on);
    } else if (const auto* split = std::get_if<SplitWrites>(&step)) {
        output_.setPieceBytes(split->pieceBytes);
    } else if (const auto* grandchild = std::get_if<Grandchild>(&step)) {
        leaveGrandchild(grandchild->time);
    }
    return std::nullopt;
}

void StepPlayer::print(const Print& step) {
    if (step.hasLineEnd) {
        output_.line(step.stream, step.text);
    } else {
        output_.bytes(step.stream, step.text);
    }
}

void StepPlayer::flood(const Flood& step) {
    FloodSource source(step.form);
    for (std::uint64_t left = step.bytes; left > 0 && !signals_.isStopRequested();) {
        std::string_view block = source.next();
        block = block.substr(0, std::min<std::uint64_t>(left, block.size()));
        output_.bytes(Stream::standardOutput, block);
        left -= block.size();
    }
}

}  // namespace valdorn::demo
