#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Observable.h"
#include "runner/Registration.h"

namespace valdorn {

class BackgroundQueue;
class MainQueue;
class RunnerManager;

// What somebody fills in to register a runner, and how the last try went. One form serves all
// runners: a token that was typed, a try under way and its outcome stay when another runner is
// looked at.
//
// Thread: main thread only; the tool runs on the background queue. There is no time-out and no
// cancelling: a tool that never ends keeps the form busy.
class RegistrationForm : public Observable, public std::enable_shared_from_this<RegistrationForm> {
    struct Key {};

public:
    // An empty form. The queues outlive it, and the main queue every task of the background queue.
    static std::shared_ptr<RegistrationForm> create(MainQueue& queue, BackgroundQueue& background);

    RegistrationForm(Key, MainQueue& queue, BackgroundQueue& background);
    RegistrationForm(const RegistrationForm&) = delete;
    RegistrationForm& operator=(const RegistrationForm&) = delete;

    // The registration token as it is typed. It stays in memory until a registration has succeeded
    // with it, and is kept nowhere else.
    const std::string& token() const VALDORN_ON_MAIN_THREAD { return token_.get(); }
    void setToken(std::string token) VALDORN_ON_MAIN_THREAD;

    // True from doRegister() until its outcome is known.
    bool busy() const VALDORN_ON_MAIN_THREAD { return busy_.get(); }
    // The outcome in one text, once there is one; while busy there is none.
    const std::optional<std::string>& message() const VALDORN_ON_MAIN_THREAD {
        return message_.get();
    }
    // Whether the message tells of success.
    bool ok() const VALDORN_ON_MAIN_THREAD { return ok_.get(); }

    // Whether the runner can be registered now: not while busy, and not without a token, an
    // instance and a name. A blank counts as something.
    bool canRegister(const RunnerManager& runner) const VALDORN_ON_MAIN_THREAD;

    // Registers the runner with the token as they are now, and starts it if that succeeds; then the
    // token is emptied. Nothing happens where canRegister() says no. Returns at once.
    void doRegister(const std::shared_ptr<RunnerManager>& runner) VALDORN_ON_MAIN_THREAD;

private:
    void apply(const RegistrationOutcome& outcome, RunnerManager& runner) VALDORN_ON_MAIN_THREAD;
    void fail(std::string description) VALDORN_ON_MAIN_THREAD;

    MainQueue& queue_;
    BackgroundQueue& background_;
    Published<std::string> token_{*this, {}};
    Published<bool> busy_{*this, false};
    Published<std::optional<std::string>> message_{*this, std::nullopt};
    Published<bool> ok_{*this, false};
};

}  // namespace valdorn
