#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_map>
#include <vector>

#include <sys/epoll.h>

#include "platform/ChildLauncher.h"
#include "platform/posix/ChildMailbox.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/LargePipes.h"
#include "platform/posix/SpawnedChild.h"

namespace valdorn {

class WatchedChild;

// The one thread that reads the output of all children and learns of their ends. It sleeps while
// there is nothing to do, however many children are held back or have closed their output.
//
// Destruction joins the thread; children that are still watched live on unobserved, what they print
// is thrown away, and their handlers are released uncalled.
class ChildReader {
public:
    // Throws std::system_error when the kernel gives no descriptor or no thread.
    ChildReader();
    ChildReader(const ChildReader&) = delete;
    ChildReader& operator=(const ChildReader&) = delete;
    ~ChildReader();

    // Any thread, handlers included. Takes over the child's output and its end. On failure the
    // answer is an errno, the handlers are released uncalled, and the child is the caller's.
    std::optional<int> watch(SpawnedChild child, ChildHandlers handlers);

private:
    using Child = std::shared_ptr<WatchedChild>;

    struct Entry {
        Child child;             // nothing while it is being enrolled
        bool wasMissed = false;  // meanwhile the kernel had something to tell of it
    };

    ChildKey reserve();
    bool enroll(ChildKey key, const SpawnedChild& child);
    void remember(ChildKey key, Child child);
    void forget(ChildKey key);
    Child find(ChildKey key);

    void loop();
    void handle(const epoll_event& event);
    void readMailbox();
    void lookAt(ChildKey key);
    void serveReady();

    const Descriptor epoll_;
    const std::shared_ptr<ChildMailbox> mailbox_;

    std::mutex mutex_;
    std::unordered_map<ChildKey, Entry> children_;  // guarded by mutex_
    ChildKey lastKey_ = 0;                          // guarded by mutex_

    // The reading thread's own.
    LargePipes largePipes_;
    std::unordered_map<ChildKey, Child> ready_;  // may have something to read
    std::vector<char> buffer_;
    bool isStopping_ = false;

    std::thread thread_;  // last: it uses all of the above
};

}  // namespace valdorn
