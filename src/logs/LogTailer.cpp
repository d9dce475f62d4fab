#include "logs/LogTailer.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace valdorn {

namespace {

// The last of the lines that were there, as the same objects, and the new ones after them; no more
// than the bound in all. There are no more new ones than that.
LogLines joined(const LogLines& before, const LogLines& added) {
    const std::size_t kept = std::min(before.size(), LogTailer::maxLines - added.size());
    LogLines::List all;
    all.reserve(kept + added.size());
    all.insert(all.end(), before.end() - static_cast<std::ptrdiff_t>(kept), before.end());
    all.insert(all.end(), added.begin(), added.end());
    return all;
}

}  // namespace

std::shared_ptr<LogTailer> LogTailer::create(MainQueue& queue, const FileSystem& files,
                                             std::string path) {
    return std::make_shared<LogTailer>(Key{}, queue, files, std::move(path));
}

LogTailer::LogTailer(Key, MainQueue& queue, const FileSystem& files, std::string path)
    : queue_(queue), tail_(files, std::move(path), maxLines), lines_(*this, {}) {}

void LogTailer::start() {
    reload();
    timer_.detach();  // assigning would end the earlier polling
    timer_ = queue_.every(pollPeriod, [weak = weak_from_this()]() VALDORN_ON_MAIN_THREAD {
        if (const auto self = weak.lock())
            self->poll();
    });
}

void LogTailer::stop() {
    timer_.cancel();
}

void LogTailer::reload() {
    lines_.set(tail_.reload());
}

void LogTailer::poll() {
    const LogTail::Update update = tail_.readNew();
    const bool isReset = update.kind == LogTail::Update::Kind::reset;
    if (update.lines.empty() && !isReset)
        return;
    lines_.set(isReset ? update.lines : joined(lines_.get(), update.lines));
}

void LogTailer::clear() {
    lines_.set({});
}

}  // namespace valdorn
