#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/ThreadAnnotations.h"

namespace valdorn {

// Keeps an observer subscribed for as long as it lives. Movable, owned by the observer; dropping
// it unsubscribes. It may outlive the object that it observes. Main thread only.
class [[nodiscard]] Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> registration)
        : registration_(std::move(registration)) {}

private:
    std::shared_ptr<void> registration_;
};

// A list of callbacks, called in subscribing order. Main thread only.
//
// Subscribing inside a notification takes part from the next notification on; an observer that
// leaves inside a notification, by its own hand or another's, is not called any more.
template <typename... Arguments>
class ObserverList {
public:
    using Callback = std::function<void(Arguments...)>;

    // Calls `callback` on each notify() until the subscription is dropped.
    [[nodiscard]] Subscription subscribe(Callback callback) VALDORN_ON_MAIN_THREAD {
        auto entry = std::make_shared<Callback>(std::move(callback));
        // Before it grows: a list that never notifies would otherwise keep all that have left.
        if (entries_.size() == entries_.capacity())
            forgetThoseThatLeft();
        entries_.push_back(entry);
        return Subscription(std::move(entry));
    }

    // Calls every observer once, with the same arguments. An observer may destroy this list.
    void notify(Arguments... arguments) VALDORN_ON_MAIN_THREAD {
        forgetThoseThatLeft();
        const std::vector<Entry> round = entries_;
        for (const Entry& entry : round) {
            if (const auto callback = entry.lock())
                (*callback)(arguments...);
        }
    }

private:
    using Entry = std::weak_ptr<Callback>;

    void forgetThoseThatLeft() VALDORN_ON_MAIN_THREAD {
        std::erase_if(entries_, [](const Entry& entry) { return entry.expired(); });
    }

    std::vector<Entry> entries_ VALDORN_MAIN_THREAD_ONLY;
};

// An object with published fields. Observers are told of a change before it is stored, while the
// old value can still be read; one that needs the new value re-reads it in a task posted to the
// MainQueue. Main thread only.
class Observable {
public:
    Observable() = default;
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    // Calls `observer` before each change of any published field.
    [[nodiscard]] Subscription onWillChange(std::function<void()> observer) VALDORN_ON_MAIN_THREAD {
        return observers_.subscribe(std::move(observer));
    }

protected:
    ~Observable() = default;

private:
    template <typename Value>
    friend class Published;

    ObserverList<> observers_;
};

// One published field of an Observable. Main thread only.
template <typename Value>
class Published {
public:
    // `owner`, whose field this is, outlives it.
    Published(Observable& owner, Value initial) : owner_(owner), value_(std::move(initial)) {}

    const Value& get() const VALDORN_ON_MAIN_THREAD { return value_; }

    // Announces the change to the owner's observers, then to this field's, then stores the value.
    // Announces equal values too: whoever wants silence for those compares first. Setting the
    // same field from inside its own announcement, or destroying the owner there, is an error of
    // the caller.
    void set(Value value) VALDORN_ON_MAIN_THREAD {
        owner_.observers_.notify();
        observers_.notify(value);
        value_ = std::move(value);
    }

    // Calls `observer` with the coming value before each change of this field.
    [[nodiscard]] Subscription onWillSet(std::function<void(const Value&)> observer)
        VALDORN_ON_MAIN_THREAD {
        return observers_.subscribe(std::move(observer));
    }

private:
    Observable& owner_;
    Value value_ VALDORN_MAIN_THREAD_ONLY;
    ObserverList<const Value&> observers_;
};

}  // namespace valdorn
