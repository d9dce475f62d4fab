// A log file that grows, is cut, replaced and removed, and what is seen of it. Each piece of the
// input is one step, named by its first byte.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fuzzed.h"
#include "logs/LogTail.h"
#include "logs/LogTailer.h"
#include "support/LogTexts.h"
#include "support/MemoryFileSystem.h"
#include "support/PlainLines.h"
#include "support/VirtualMainQueue.h"

namespace valdorn {

namespace {

using Lines = std::vector<std::string>;

constexpr char path[] = "/log";

// The rules of following a log, everything read anew each time.
class PlainTailer {
public:
    explicit PlainTailer(std::size_t maxLines) : maxLines_(maxLines) {}

    void reload(const std::optional<std::string>& content) {
        lines = plainLines(content.value_or(""), maxLines_);
        offset = content.value_or("").size();
    }

    // Whether there is anything to tell.
    bool poll(const std::optional<std::string>& content) {
        if (!content || content->size() == offset)
            return false;
        if (content->size() < offset) {
            reload(content);
            return true;
        }
        for (std::string& line : plainLines(content->substr(offset), maxLines_))
            lines.push_back(std::move(line));
        if (lines.size() > maxLines_)
            lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(maxLines_));
        offset = content->size();
        return true;
    }

    Lines lines;
    std::size_t offset = 0;

private:
    const std::size_t maxLines_;
};

// The same with the real reader, of a few lines only.
class FewLines {
public:
    explicit FewLines(const FileSystem& files) : tail_(files, path, maxLines) {}

    void reload() { seen_ = texts(tail_.reload()); }

    void poll() {
        const LogTail::Update update = tail_.readNew();
        if (update.kind == LogTail::Update::Kind::reset)
            seen_.clear();
        for (std::string& line : texts(update.lines))
            seen_.push_back(std::move(line));
        if (seen_.size() > maxLines)
            seen_.erase(seen_.begin(), seen_.end() - std::ptrdiff_t{maxLines});
    }

    void check(const PlainTailer& plain) const {
        require(seen_ == plain.lines, "the last few lines are those of the whole file");
        require(tail_.offset() == plain.offset, "all that was measured counts as read");
    }

    static constexpr std::size_t maxLines = 3;

private:
    LogTail tail_;
    Lines seen_;
};

class Follower {
public:
    void take(const std::string& step) {
        const std::string rest = step.empty() ? step : step.substr(1);
        switch (step.empty() ? 'p' : step.front()) {
            case 't':
                cut(rest.size());
                return;
            case 'r':
                files_.files[path] = rest;
                return;
            case 'd':
                files_.files.erase(path);
                return;
            case 'l':
                reload();
                return;
            case 'c':
                tailer_->clear();
                plain_.lines.clear();
                return;
            case 'p':
                poll();
                return;
            default:
                files_.files[path] += rest;
        }
    }

    void checkSplit() const {
        const std::string bytes = content().value_or("");
        require(texts(LogTail::split(bytes)) == plainLines(bytes, bytes.size() + 1),
                "a text is split as the plain way does it");
    }

    void poll() {
        const std::size_t toldBefore = told_;
        const Lines before = plain_.lines;
        const bool isNews = plain_.poll(content());
        tailer_->poll();
        plainFew_.poll(content());
        few_.poll();
        check();
        require(isNews || told_ == toldBefore, "nobody is told of nothing");
        require(plain_.lines == before || told_ > toldBefore, "each change is told");
    }

private:
    void reload() {
        plain_.reload(content());
        tailer_->reload();
        plainFew_.reload(content());
        few_.reload();
        check();
    }

    void check() const {
        require(texts(tailer_->lines()) == plain_.lines, "the lines are those of the whole file");
        few_.check(plainFew_);
    }

    std::optional<std::string> content() const {
        const auto found = files_.files.find(path);
        return found == files_.files.end() ? std::nullopt : std::optional(found->second);
    }

    void cut(std::size_t bytes) {
        if (const auto found = files_.files.find(path); found != files_.files.end())
            found->second.resize(found->second.size() - std::min(bytes, found->second.size()));
    }

    MemoryFileSystem files_;
    VirtualMainQueue queue_;
    std::shared_ptr<LogTailer> tailer_ = LogTailer::create(queue_, files_, path);
    std::size_t told_ = 0;
    Subscription subscription_ = tailer_->onWillChange([this] { ++told_; });
    PlainTailer plain_{LogTailer::maxLines};
    FewLines few_{files_};
    PlainTailer plainFew_{FewLines::maxLines};
};

}  // namespace

void fuzzed(std::string_view input) {
    Follower follower;
    for (const std::string& step : piecesWithRunsOf(input))
        follower.take(step);
    follower.poll();
    follower.checkSplit();
}

}  // namespace valdorn
