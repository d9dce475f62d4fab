#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>

#include "platform/HttpClient.h"
#include "platform/Observable.h"

namespace valdorn {

// Finds out the tag of the runner's latest release. Silent: while it is not known there is nothing
// to tell, whatever the reason.
//
// Thread: main thread only; nothing waits. Destroying it drops the requests under way, so that no
// answer comes late.
class UpdateChecker : public Observable {
public:
    // `serviceUrl` is the base URL of the release service, with or without a slash at its end. The
    // client outlives this, or ends with nobody calling check() any more.
    UpdateChecker(HttpClient& http, std::string serviceUrl);
    ~UpdateChecker();

    // The tag exactly as the service gave it, such as "v0.2.11", once one has come. Observers are
    // told before each answer with a tag is stored.
    const std::optional<std::string>& latest() const VALDORN_ON_MAIN_THREAD {
        return latest_.get();
    }

    // Asks the service unless a tag has come already. Requests under way do not hold it back: one that
    // hangs until its ten seconds are over must not keep the one from being made that would succeed.
    // Each call makes one, and the last to succeed decides. Nothing is tried again by itself.
    void check() VALDORN_ON_MAIN_THREAD;

private:
    void accept(const Result<std::string, HttpError>& answer) VALDORN_ON_MAIN_THREAD;

    HttpClient& http_;
    const std::string url_;
    Published<std::optional<std::string>> latest_{*this, std::nullopt};
    std::list<std::unique_ptr<HttpRequest>> requests_ VALDORN_MAIN_THREAD_ONLY;  // under way
};

}  // namespace valdorn
