#include "platform/posix/WatchedChild.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/posix/OutputDrain.h"

namespace valdorn {

WatchedChild::WatchedChild(SpawnedChild child, ChildHandlers handlers,
                           std::shared_ptr<OutputBudget> budget)
    : child_(std::move(child)), handlers_(std::move(handlers)), budget_(std::move(budget)) {}

WatchedChild::Turn WatchedChild::takeTurn(std::span<char> buffer) {
    if (!handlers_)
        return Turn::finished;
    if (exit_ && leftAtExitBytes_ == 0)
        return reportExit();
    if (!child_.output || budget_->isOverdrawn())
        return Turn::wait;
    return readOnce(buffer);
}

void WatchedChild::noteEnd() {
    if (exit_)
        return;
    exit_ = child_.process->reap();
    int readable = 0;
    if (exit_ && child_.output && ioctl(child_.output.number(), FIONREAD, &readable) == 0)
        leftAtExitBytes_ = static_cast<std::size_t>(readable);
}

// One read empties the pipe, which holds no more than the buffer does, so what a child writes in one
// piece is not cut where a character may be lost. The pipe is therefore left as the kernel makes it; a
// larger one has measured no faster either, as a child that floods waits for us and not for room, and
// its pages are counted against all programs of the user.
//
// A read that falls short is not the last one: if the writers were gone already by then, the kernel
// has told so together with the bytes and does not tell again.
WatchedChild::Turn WatchedChild::readOnce(std::span<char> buffer) {
    const auto wanted = exit_ ? buffer.first(std::min(buffer.size(), leftAtExitBytes_)) : buffer;
    const ssize_t got = read(child_.output.number(), wanted.data(), wanted.size());
    if (got > 0) {
        handOver(wanted.first(static_cast<std::size_t>(got)));
        return Turn::again;
    }
    if (got < 0 && errno == EINTR)
        return Turn::again;
    if (got < 0 && errno == EAGAIN && !exit_)
        return Turn::wait;
    endOutput();
    return exit_ ? Turn::again : Turn::wait;
}

void WatchedChild::handOver(std::span<const char> chunk) {
    if (exit_)
        leftAtExitBytes_ -= chunk.size();
    handlers_->onOutput({chunk.data(), chunk.size()}, budget_->take(chunk.size()));
}

void WatchedChild::leave() {
    noteEnd();
    if (!exit_ && child_.output)
        leaveToDrain(child_.output.number());
}

WatchedChild::Turn WatchedChild::reportExit() {
    endOutput();
    const auto last = std::exchange(handlers_, std::nullopt);
    last->onExit(*exit_);
    return Turn::finished;
}

// Nothing more can come, or is to: gives the descriptor back.
void WatchedChild::endOutput() {
    leftAtExitBytes_ = 0;
    child_.output.reset();
}

}  // namespace valdorn
