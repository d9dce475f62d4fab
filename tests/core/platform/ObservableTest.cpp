#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <malloc.h>

#include "platform/Observable.h"

namespace valdorn {
namespace {

class Counter : public Observable {
public:
    Published<int> count{*this, 0};
    Published<std::string> name{*this, "old"};
};

TEST(ObservableTest, AnnouncesAChangeWhileTheOldValueCanBeRead) {
    Counter counter;
    int coming = -1;
    int readInside = -1;
    const Subscription subscription = counter.count.onWillSet([&](const int& value) {
        coming = value;
        readInside = counter.count.get();
    });
    counter.count.set(7);
    EXPECT_EQ(coming, 7);
    EXPECT_EQ(readInside, 0);
    EXPECT_EQ(counter.count.get(), 7);
}

TEST(ObservableTest, TheOwnersObserversAreToldOfEveryFieldBeforeItIsStored) {
    Counter counter;
    std::string log;
    const Subscription subscription = counter.onWillChange(
        [&] { log += std::to_string(counter.count.get()) + counter.name.get() + ";"; });
    counter.count.set(1);
    counter.name.set("new");
    counter.count.set(2);
    EXPECT_EQ(log, "0old;1old;1new;");
}

TEST(ObservableTest, TheOwnersObserversComeBeforeTheFields) {
    Counter counter;
    std::string log;
    const Subscription field = counter.count.onWillSet([&](const int&) { log += "field;"; });
    const Subscription owner = counter.onWillChange([&] { log += "owner;"; });
    counter.count.set(1);
    EXPECT_EQ(log, "owner;field;");
}

TEST(ObservableTest, OneFieldsObserverHearsNothingOfAnother) {
    Counter counter;
    int calls = 0;
    const Subscription subscription = counter.name.onWillSet([&](const auto&) { ++calls; });
    counter.count.set(1);
    EXPECT_EQ(calls, 0);
}

TEST(ObservableTest, AnnouncesEqualValuesToo) {
    Counter counter;
    int calls = 0;
    const Subscription subscription = counter.onWillChange([&] { ++calls; });
    counter.count.set(0);
    EXPECT_EQ(calls, 1);
}

TEST(ObservableTest, ObserversAreCalledInSubscribingOrder) {
    Counter counter;
    std::string log;
    const Subscription first = counter.onWillChange([&] { log += 'a'; });
    Subscription second = counter.onWillChange([&] { log += 'b'; });
    const Subscription third = counter.onWillChange([&] { log += 'c'; });
    counter.count.set(1);
    second = counter.onWillChange([&] { log += 'd'; });
    counter.count.set(2);
    EXPECT_EQ(log, "abcacd");
}

TEST(ObservableTest, DroppingASubscriptionEndsItAndFreesTheObserver) {
    Counter counter;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    Subscription subscription = counter.onWillChange([held = std::move(held)] { ++*held; });
    counter.count.set(1);
    subscription = Subscription();
    EXPECT_TRUE(watched.expired());
    counter.count.set(2);
}

TEST(ObservableTest, AMovedSubscriptionStaysSubscribed) {
    Counter counter;
    int calls = 0;
    Subscription first = counter.onWillChange([&] { ++calls; });
    const Subscription second = std::move(first);
    counter.count.set(1);
    EXPECT_EQ(calls, 1);
}

TEST(ObservableTest, SubscribingInsideANotificationCountsFromTheNextOne) {
    Counter counter;
    std::string log;
    Subscription inner;
    const Subscription outer = counter.onWillChange([&] {
        log += 'a';
        inner = counter.onWillChange([&] { log += 'b'; });
    });
    counter.count.set(1);
    EXPECT_EQ(log, "a");
    counter.count.set(2);
    // The first inner subscription was replaced inside the second notification, before its turn.
    EXPECT_EQ(log, "aa");
}

TEST(ObservableTest, WhoSubscribedInsideANotificationHearsTheNextOne) {
    Counter counter;
    std::string log;
    std::optional<Subscription> inner;
    const Subscription outer = counter.onWillChange([&] {
        if (!inner)
            inner = counter.onWillChange([&] { log += 'b'; });
    });
    counter.count.set(1);
    EXPECT_EQ(log, "");
    counter.count.set(2);
    EXPECT_EQ(log, "b");
}

TEST(ObservableTest, AnObserverMayLeaveInsideItsOwnNotification) {
    Counter counter;
    int calls = 0;
    Subscription subscription;
    subscription = counter.onWillChange([&] {
        subscription = Subscription();
        ++calls;  // what the callback holds is still alive
    });
    counter.count.set(1);
    counter.count.set(2);
    EXPECT_EQ(calls, 1);
}

TEST(ObservableTest, AnObserverThatAnotherDropsBeforeItsTurnIsNotCalled) {
    Counter counter;
    std::string log;
    Subscription second;
    const Subscription first = counter.onWillChange([&] {
        log += 'a';
        second = Subscription();
    });
    second = counter.onWillChange([&] { log += 'x'; });
    const Subscription third = counter.onWillChange([&] { log += 'c'; });
    counter.count.set(1);
    EXPECT_EQ(log, "ac");
}

TEST(ObservableTest, ASubscriptionMayOutliveTheObject) {
    auto counter = std::make_unique<Counter>();
    const Subscription owner = counter->onWillChange([] {});
    const Subscription field = counter->count.onWillSet([](const int&) {});
    counter.reset();
}

TEST(ObserverListTest, AnObserverMayDestroyTheListThatCallsIt) {
    auto list = std::make_unique<ObserverList<int>>();
    std::string log;
    const Subscription first = list->subscribe([&](int value) {
        list.reset();
        log += std::to_string(value);
    });
    const Subscription second = list->subscribe([&](int value) { log += std::to_string(value); });
    list->notify(4);
    EXPECT_EQ(log, "44");
}

TEST(ObserverListTest, ANotificationInsideANotificationReachesEveryone) {
    ObserverList<int> list;
    std::string log;
    const Subscription first = list.subscribe([&](int depth) {
        log += "a" + std::to_string(depth);
        if (depth == 0)
            list.notify(1);
    });
    const Subscription second =
        list.subscribe([&](int depth) { log += "b" + std::to_string(depth); });
    list.notify(0);
    EXPECT_EQ(log, "a0a1b1b0");
}

TEST(ObservableTest, KeepsNothingOfObserversThatLeaveWhileNothingChanges) {
    if (!std::string_view(VALDORN_SANITIZE).empty())
        GTEST_SKIP() << "a sanitizer has a memory of its own, of which nothing is told";
    Counter counter;
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < 10'000; ++i)
        const Subscription subscription = counter.onWillChange([] {});
    EXPECT_LT(mallinfo2().uordblks, before + 10'000);
}

}  // namespace
}  // namespace valdorn
