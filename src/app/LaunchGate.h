#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "platform/MainQueue.h"

namespace valdorn {

// Decides when the program launches, and keeps what is asked of it before. Main thread only.
//
//   state     ready()                        request()              patience is over   close()
//   held      launches, unless a request is  kept for the launch    -                  closed
//             awaited and none has come
//   awaiting  -                              launches, then runs    launches           closed
//   launched  -                              runs                   -                  closed
//   closed    -                              dropped                -                  -
//
// Awaiting is what held becomes with awaitRequest() and ready().
class LaunchGate {
public:
    // How long a request is awaited. It is on its way when the program is started for its sake;
    // whoever was only told so by mistake should not have to wait long.
    static constexpr std::chrono::seconds requestPatience{2};

    // The queue outlives this. `launch` is called once at the most.
    LaunchGate(MainQueue& mainQueue, std::function<void()> launch);

    // Before ready(): the program was started for the sake of a request, and what that is decides
    // whether there is anything to launch.
    void awaitRequest() { isRequestAwaited_ = true; }

    // All that a launch needs is there.
    void ready();

    // Something that only a launched program can do; run within the call when it has launched.
    void request(std::function<void()> task);

    // The program ends: nothing is launched or run any more.
    void close();

private:
    enum class State { held, awaiting, launched, closed };

    void launch();

    MainQueue& mainQueue_;
    const std::function<void()> launch_;
    State state_ = State::held;
    bool isRequestAwaited_ = false;
    std::vector<std::function<void()>> requests_;  // empty from the launch on
    ScheduledTask patience_;
};

}  // namespace valdorn
