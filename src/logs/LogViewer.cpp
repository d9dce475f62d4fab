#include "logs/LogViewer.h"

#include <algorithm>
#include <utility>

namespace valdorn {

namespace {

std::string joined(const LogLines& lines) {
    std::string text;
    bool first = true;
    for (const LogLine& line : lines) {
        if (!std::exchange(first, false))
            text += '\n';
        text += *line;
    }
    return text;
}

}  // namespace

LogViewer::LogViewer(MainQueue& queue, std::shared_ptr<LogTailer> tailer, CaseFold fold)
    : tailer_(std::move(tailer)),
      fold_(fold),
      lines_(tailer_->lines()),
      filtered_(lines_),
      update_(queue, [this]() VALDORN_ON_MAIN_THREAD { update(); }),
      linesSubscription_(tailer_->onWillChange([this] { update_.request(); })) {}

void LogViewer::setQuery(std::string query) {
    if (query == query_)
        return;
    query_ = std::move(query);
    queryKey_ = fold_.key(query_);
    filterAnew();
}

void LogViewer::setLevel(LevelFilter level) {
    if (std::exchange(level_, level) != level)
        filterAnew();
}

std::string LogViewer::text() const {
    if (tailer_->lines() == lines_)
        return joined(filtered_);
    LogLines::List passing;
    for (const LogLine& line : tailer_->lines()) {
        if (passes(level_, *line) &&
            (query_.empty() || CaseFold::contains(fold_.key(*line), queryKey_)))
            passing.push_back(line);
    }
    return joined(passing);
}

void LogViewer::update() {
    const std::size_t dropped = droppedLines();
    const std::size_t kept = lines_.size() - dropped;
    const std::ptrdiff_t gone = filteredAmongFirst(dropped);
    takeLines(dropped);
    if (everyLinePasses())
        return show(lines_);
    LogLines::List shown(filtered_.begin() + gone, filtered_.end());
    appendPassing(shown, kept);
    show(std::move(shown));
}

void LogViewer::filterAnew() {
    takeLines(droppedLines());
    if (everyLinePasses())
        return show(lines_);
    LogLines::List shown;
    appendPassing(shown, 0);
    show(std::move(shown));
}

std::size_t LogViewer::droppedLines() const {
    const LogLines& now = tailer_->lines();
    if (now.empty())
        return lines_.size();
    const auto kept = std::find(lines_.begin(), lines_.end(), now.front());
    const auto [end, unused] = std::mismatch(kept, lines_.end(), now.begin(), now.end());
    return end == lines_.end() ? static_cast<std::size_t>(kept - lines_.begin()) : lines_.size();
}

std::ptrdiff_t LogViewer::filteredAmongFirst(std::size_t count) const {
    std::size_t found = 0;
    for (std::size_t at = 0; at < count && found < filtered_.size(); ++at) {
        if (lines_[at] == filtered_[found])
            ++found;
    }
    return static_cast<std::ptrdiff_t>(found);
}

void LogViewer::takeLines(std::size_t dropped) {
    lines_ = tailer_->lines();
    if (query_.empty()) {
        keys_ = {};
        return;
    }
    const std::size_t stale = std::min(dropped, keys_.size());
    keys_.erase(keys_.begin(), keys_.begin() + static_cast<std::ptrdiff_t>(stale));
    for (std::size_t at = keys_.size(); at < lines_.size(); ++at)
        keys_.push_back(fold_.key(*lines_[at]));
}

bool LogViewer::everyLinePasses() const {
    return query_.empty() && level_ == LevelFilter::all;
}

void LogViewer::appendPassing(LogLines::List& shown, std::size_t first) const {
    for (std::size_t at = first; at < lines_.size(); ++at) {
        if (passes(level_, *lines_[at]) &&
            (query_.empty() || CaseFold::contains(keys_[at], queryKey_)))
            shown.push_back(lines_[at]);
    }
}

void LogViewer::show(LogLines shown) {
    if (shown == filtered_)
        return;
    const bool recounted = shown.size() != filtered_.size();
    filtered_ = std::move(shown);
    const bool scrolls = recounted && follow_ && !filtered_.empty();
    observers_.notify(scrolls ? Scrolling::toLast : Scrolling::keep);
}

}  // namespace valdorn
