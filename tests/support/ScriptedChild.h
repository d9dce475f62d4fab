#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ChildLauncher.h"

namespace valdorn {

// A child that does what a test tells it, and keeps the rules that ChildHandlers promises: output
// is held back while too much of it is pending, the exit comes last and once, and the handlers are
// released after it. One thread only; made and owned by a MemoryChildLauncher.
class ScriptedChild : public std::enable_shared_from_this<ScriptedChild> {
public:
    ScriptedChild(std::int64_t id, ChildHandlers handlers);

    // Hands the bytes to onOutput before returning, in chunks of at most 64 KiB, or keeps what is
    // held back until credits are dropped. After the end it is a grandchild's output: discarded.
    void print(std::string_view chunk);

    // The child ends: isRunning() is false from here, onExit follows after what is held back.
    // Ending a child that has ended does nothing.
    void end(ChildExit exit);

    // How often terminate() was called, after the end too. The child does not react by itself.
    int terminateRequests() const { return terminateRequests_; }

    // Bytes handed over whose credits are still alive.
    std::size_t pendingBytes() const { return pendingBytes_; }

    // Bytes printed that are held back.
    std::size_t heldBackBytes() const;

    bool isRunning() const { return !exit_; }
    std::int64_t id() const { return id_; }

    // For the launcher and its handles.
    void noteTerminate() { ++terminateRequests_; }
    void detach();  // no handler is called any more; their closures are released

private:
    void pump();
    void deliver(const std::string& chunk);
    void deliverExit();
    OutputCredit credit(std::size_t bytes);
    void dropCredit(std::size_t bytes);

    const std::int64_t id_;
    std::optional<ChildHandlers> handlers_;  // nothing once the exit is reported
    std::deque<std::string> heldBack_;
    std::optional<ChildExit> exit_;
    std::size_t pendingBytes_ = 0;
    int terminateRequests_ = 0;
    bool isPumping_ = false;
};

}  // namespace valdorn
