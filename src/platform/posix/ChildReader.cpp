#include "platform/posix/ChildReader.h"

#include <array>
#include <cerrno>
#include <utility>

#include <signal.h>

#include "platform/posix/KernelCall.h"
#include "platform/posix/OutputBudget.h"
#include "platform/posix/WatchedChild.h"

namespace valdorn {

namespace {

constexpr std::size_t eventsAtOnce = 64;

constexpr ChildKey mailboxKey = 0;  // never a child's

bool listen(const Descriptor& epoll, int number, std::uint32_t events, ChildKey key) {
    epoll_event event{};
    event.events = events;
    event.data.u64 = key;
    return epoll_ctl(epoll.number(), EPOLL_CTL_ADD, number, &event) == 0;
}

// Signals are for the main thread, which knows what they mean to the program.
class WithoutSignals {
public:
    WithoutSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    WithoutSignals(const WithoutSignals&) = delete;
    WithoutSignals& operator=(const WithoutSignals&) = delete;
    ~WithoutSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_{};
};

}  // namespace

ChildReader::ChildReader()
    : epoll_(orThrow(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
      mailbox_(std::make_shared<ChildMailbox>()),
      buffer_(maxChunkBytes) {
    requireSuccess(listen(epoll_, mailbox_->number(), EPOLLIN, mailboxKey), "epoll_ctl");
    const WithoutSignals inherited;
    thread_ = std::thread([this] { loop(); });
}

ChildReader::~ChildReader() {
    mailbox_->stop();
    thread_.join();
    for (const auto& [key, entry] : children_) {
        if (entry.child)  // none where memory ran out while it was being enrolled
            entry.child->leave();
    }
}

std::optional<int> ChildReader::watch(SpawnedChild child, ChildHandlers handlers) {
    const ChildKey key = reserve();
    auto budget = std::make_shared<OutputBudget>(mailbox_, key);
    auto watched = std::make_shared<WatchedChild>(std::move(child), std::move(handlers),
                                                  std::move(budget), largePipes_);
    // The reader gets to see it only once nothing can fail any more.
    if (!enroll(key, watched->child())) {
        const int why = errno;
        forget(key);
        return why;
    }
    remember(key, std::move(watched));
    return std::nullopt;
}

ChildKey ChildReader::reserve() {
    const std::lock_guard lock(mutex_);
    children_.emplace(++lastKey_, Entry{});
    return lastKey_;
}

// Edge-triggered: each change is told once. A level would be told again and again for a pipe that
// is held back and whose writers are gone, which cannot be switched off. What is known to be
// readable and not read yet is kept in `ready_` instead.
bool ChildReader::enroll(ChildKey key, const SpawnedChild& child) {
    constexpr std::uint32_t changes = EPOLLIN | EPOLLET;
    return listen(epoll_, child.process->number(), changes, key) &&
           (!child.output || listen(epoll_, child.output.number(), changes, key));
}

// The kernel tells each change once, so what it has told too early is told again. As a rule it has
// told nothing yet, and then the reader sleeps on: to wake it each time would make all launches
// slower.
void ChildReader::remember(ChildKey key, Child child) {
    const std::lock_guard lock(mutex_);
    Entry& entry = children_.at(key);
    entry.child = std::move(child);
    if (entry.wasMissed)
        mailbox_->lookAt(key);
}

void ChildReader::forget(ChildKey key) {
    Child forgotten;  // destroyed without the lock: it owns closures of others
    const std::lock_guard lock(mutex_);
    if (const auto found = children_.find(key); found != children_.end()) {
        forgotten = std::move(found->second.child);
        children_.erase(found);
    }
}

ChildReader::Child ChildReader::find(ChildKey key) {
    const std::lock_guard lock(mutex_);
    const auto found = children_.find(key);
    if (found == children_.end())
        return nullptr;
    found->second.wasMissed = !found->second.child;
    return found->second.child;
}

void ChildReader::loop() {
    std::array<epoll_event, eventsAtOnce> events{};
    while (!isStopping_) {
        const int patience = ready_.empty() ? -1 : 0;
        const int count = epoll_wait(epoll_.number(), events.data(), eventsAtOnce, patience);
        for (int index = 0; index < count; ++index)
            handle(events[static_cast<std::size_t>(index)]);
        if (!isStopping_)
            serveReady();
    }
}

void ChildReader::handle(const epoll_event& event) {
    if (event.data.u64 == mailboxKey)
        readMailbox();
    else
        lookAt(event.data.u64);
}

void ChildReader::readMailbox() {
    const auto letters = mailbox_->take();
    isStopping_ = letters.isStopping;
    for (const ChildKey key : letters.children)
        lookAt(key);
}

void ChildReader::lookAt(ChildKey key) {
    if (Child child = find(key)) {
        child->noteEnd();
        ready_.emplace(key, std::move(child));
    }
}

// One buffer for each child in turn, so that one that floods does not starve the others.
void ChildReader::serveReady() {
    for (auto next = ready_.begin(); next != ready_.end();) {
        const auto turn = next->second->takeTurn(buffer_);
        if (turn == WatchedChild::Turn::finished)
            forget(next->first);
        next = turn == WatchedChild::Turn::again ? std::next(next) : ready_.erase(next);
    }
}

}  // namespace valdorn
