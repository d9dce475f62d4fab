#include "support/ChildRecorder.h"

#include <chrono>
#include <utility>

namespace valdorn {

namespace {

constexpr std::chrono::seconds patience{60};

}  // namespace

ChildHandlers ChildRecorder::handlers() {
    const std::shared_ptr<void> captured(this, [this](void*) { noteRelease(); });
    return {[this, captured](std::string_view chunk, OutputCredit credit) {
                noteOutput(chunk, std::move(credit));
            },
            [this, captured](ChildExit exit) { noteExit(exit); }};
}

bool ChildRecorder::waitForBytes(std::size_t count) {
    return waitFor([&] { return output_.size() >= count; });
}

bool ChildRecorder::waitForText(const std::string& text) {
    return waitFor([&] { return output_.find(text) != std::string::npos; });
}

bool ChildRecorder::waitForExit() {
    return waitFor([&] { return exit_.has_value(); });
}

bool ChildRecorder::waitForRelease() {
    return waitFor([&] { return isReleased_; });
}

std::string ChildRecorder::output() const {
    const std::lock_guard lock(mutex_);
    return output_;
}

std::vector<std::string> ChildRecorder::chunks() const {
    const std::lock_guard lock(mutex_);
    return chunks_;
}

std::optional<ChildExit> ChildRecorder::exit() const {
    const std::lock_guard lock(mutex_);
    return exit_;
}

int ChildRecorder::callsAfterExit() const {
    const std::lock_guard lock(mutex_);
    return callsAfterExit_;
}

void ChildRecorder::dropCredits() {
    std::vector<OutputCredit> dropped;  // without the lock: a credit may bring more output at once
    const std::lock_guard lock(mutex_);
    credits_ = Credits::dropAtOnce;
    dropped.swap(kept_);
}

void ChildRecorder::noteOutput(std::string_view chunk, OutputCredit credit) {
    const std::lock_guard lock(mutex_);
    callsAfterExit_ += exit_ ? 1 : 0;
    output_ += chunk;
    chunks_.emplace_back(chunk);
    if (credits_ == Credits::keep)
        kept_.push_back(std::move(credit));
    changed_.notify_all();
}

void ChildRecorder::noteExit(ChildExit exit) {
    const std::lock_guard lock(mutex_);
    callsAfterExit_ += exit_ ? 1 : 0;
    exit_ = exit;
    changed_.notify_all();
}

void ChildRecorder::noteRelease() {
    const std::lock_guard lock(mutex_);
    isReleased_ = true;
    changed_.notify_all();
}

bool ChildRecorder::waitFor(const std::function<bool()>& condition) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, patience, condition);
}

}  // namespace valdorn
