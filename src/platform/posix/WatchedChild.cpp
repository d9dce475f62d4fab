#include "platform/posix/WatchedChild.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/ChunkEnd.h"
#include "platform/posix/OutputDrain.h"

namespace valdorn {

namespace {

// What can be read at this moment; where the kernel does not tell, as much as a pipe may hold.
std::size_t bytesIn(const Descriptor& pipe) {
    int readable = 0;
    if (ioctl(pipe.number(), FIONREAD, &readable) != 0)
        return LargePipes::largeBytes;
    return static_cast<std::size_t>(readable);
}

}  // namespace

WatchedChild::WatchedChild(SpawnedChild child, ChildHandlers handlers,
                           std::shared_ptr<OutputBudget> budget, LargePipes& largePipes)
    : child_(std::move(child)),
      handlers_(std::move(handlers)),
      budget_(std::move(budget)),
      largePipes_(largePipes) {}

WatchedChild::Turn WatchedChild::takeTurn(std::span<char> buffer) {
    if (!handlers_)
        return Turn::finished;
    const bool isAllRead = exit_ && leftAtExitBytes_ == 0;
    if (isAllRead && begun_.empty())
        return reportExit();
    if (!child_.output || budget_->isOverdrawn())
        return Turn::wait;
    if (!isAllRead)
        return readOnce(buffer);
    endFlood();  // with what has no line feed behind it and gets none any more
    return Turn::again;
}

void WatchedChild::noteEnd() {
    if (exit_)
        return;
    exit_ = child_.process->reap();
    if (exit_ && child_.output)
        leftAtExitBytes_ = bytesIn(child_.output);
}

// A read that falls short is not the last one: if the writers were gone already by then, the kernel
// has told so together with the bytes and does not tell again.
WatchedChild::Turn WatchedChild::readOnce(std::span<char> buffer) {
    std::copy(begun_.begin(), begun_.end(), buffer.begin());
    const auto room = buffer.subspan(begun_.size());
    const auto wanted = exit_ ? room.first(std::min(room.size(), leftAtExitBytes_)) : room;
    const ssize_t got = read(child_.output.number(), wanted.data(), wanted.size());
    if (got > 0) {
        const auto bytes = static_cast<std::size_t>(got);
        if (exit_)
            leftAtExitBytes_ -= bytes;
        take({buffer.data(), begun_.size() + bytes}, buffer.size());
        return Turn::again;
    }
    if (got < 0 && errno == EINTR)
        return Turn::again;
    const bool isEmpty = got < 0 && errno == EAGAIN;
    endFlood();
    if (isEmpty && !exit_)
        return Turn::wait;
    endOutput();
    return exit_ ? Turn::again : Turn::wait;
}

// With half a buffer and more the child prints faster than we read. Until the pipe has been found
// empty a chunk may then end wherever the buffer did, in the middle of what the child wrote as one
// piece.
void WatchedChild::take(std::string_view chunk, std::size_t bufferBytes) {
    if (chunk.size() > bufferBytes / 2) {
        isFlooding_ = true;
        largePipes_.enlarge(child_.output);
    }
    const std::size_t end = isFlooding_ ? chunkEnd(chunk) : chunk.size();
    begun_ = chunk.substr(end);
    handOver(chunk.substr(0, end));
}

void WatchedChild::handOver(std::string_view chunk) {
    handlers_->onOutput(chunk, budget_->take(chunk.size()));
}

void WatchedChild::endFlood() {
    isFlooding_ = false;
    if (!begun_.empty())
        handOver(std::exchange(begun_, {}));
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
    largePipes_.forget(child_.output);
    child_.output.reset();
}

}  // namespace valdorn
