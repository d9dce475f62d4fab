#include "update/UpdateChecker.h"

#include <chrono>
#include <cstddef>
#include <utility>

#include "update/ReleaseTag.h"

namespace valdorn {

namespace {

// The hint is worth a short wait only: the next opening of the window asks again.
constexpr std::chrono::seconds timeout{10};

// A release with its notes and the list of its files takes some tens of kilobytes. What is far over
// that is no release, and memory must not grow with it.
constexpr std::size_t maxBodyBytes = std::size_t{1024} * 1024;

std::string latestReleaseUrl(std::string serviceUrl) {
    while (serviceUrl.ends_with('/'))
        serviceUrl.pop_back();
    return serviceUrl + "/api/v1/repos/gitea/runner/releases/latest";
}

}  // namespace

UpdateChecker::UpdateChecker(HttpClient& http, std::string serviceUrl)
    : http_(http), url_(latestReleaseUrl(std::move(serviceUrl))) {}

UpdateChecker::~UpdateChecker() = default;

void UpdateChecker::check() {
    if (latest())
        return;
    const auto request = requests_.emplace(requests_.end());
    *request = http_.get({url_, timeout, maxBodyBytes},
                         [this, request](const auto& answer) VALDORN_ON_MAIN_THREAD {
                             requests_.erase(request);
                             accept(answer);
                         });
}

void UpdateChecker::accept(const Result<std::string, HttpError>& answer) {
    // A check that failed is not worth a word to the user, who did not ask for it.
    if (!answer)
        return;
    if (auto tag = releaseTag(answer.value()))
        latest_.set(std::move(tag));
}

}  // namespace valdorn
