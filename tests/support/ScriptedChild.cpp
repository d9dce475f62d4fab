#include "support/ScriptedChild.h"

#include <utility>

#include "platform/ChunkEnd.h"

namespace valdorn {

ScriptedChild::ScriptedChild(std::int64_t id, ChildHandlers handlers)
    : id_(id), handlers_(std::move(handlers)) {}

void ScriptedChild::print(std::string_view chunk) {
    if (exit_)
        return;
    while (chunk.size() > maxChunkBytes) {
        const std::size_t end = chunkEnd(chunk.substr(0, maxChunkBytes));
        heldBack_.emplace_back(chunk.substr(0, end));
        chunk.remove_prefix(end);
    }
    if (!chunk.empty())
        heldBack_.emplace_back(chunk);
    pump();
}

void ScriptedChild::end(ChildExit exit) {
    if (exit_)
        return;
    exit_ = exit;
    pump();
}

std::size_t ScriptedChild::heldBackBytes() const {
    std::size_t bytes = 0;
    for (const std::string& chunk : heldBack_)
        bytes += chunk.size();
    return bytes;
}

void ScriptedChild::detach() {
    heldBack_.clear();
    const auto released = std::exchange(handlers_, std::nullopt);
}

// A credit may be dropped inside the handler that it was given to, and a handler may make the
// child print: the outermost call goes on for them, so that handlers are never nested.
void ScriptedChild::pump() {
    if (isPumping_)
        return;
    const auto self = shared_from_this();
    isPumping_ = true;
    while (handlers_ && !heldBack_.empty() && pendingBytes_ <= maxPendingOutputBytes) {
        const std::string chunk = std::move(heldBack_.front());
        heldBack_.pop_front();
        deliver(chunk);
    }
    if (handlers_ && exit_ && heldBack_.empty())
        deliverExit();
    isPumping_ = false;
}

void ScriptedChild::deliver(const std::string& chunk) {
    handlers_->onOutput(chunk, credit(chunk.size()));
}

void ScriptedChild::deliverExit() {
    const auto last = std::exchange(handlers_, std::nullopt);
    last->onExit(*exit_);
}

OutputCredit ScriptedChild::credit(std::size_t bytes) {
    pendingBytes_ += bytes;
    const auto giveBack = [child = weak_from_this(), bytes](void*) {
        if (const auto alive = child.lock())
            alive->dropCredit(bytes);
    };
    return {this, giveBack};
}

void ScriptedChild::dropCredit(std::size_t bytes) {
    pendingBytes_ -= bytes;
    pump();
}

}  // namespace valdorn
