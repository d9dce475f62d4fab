#include "simulation/ModelLog.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "simulation/Marks.h"
#include "simulation/ModelText.h"

namespace valdorn::simulation {

namespace {

constexpr std::size_t mostLines = 5000;
constexpr Millis period = 1000;

const char* wordOf(LevelFilter level) {
    switch (level) {
        case LevelFilter::all:
            return "";
        case LevelFilter::info:
            return "level=info";
        case LevelFilter::warning:
            return "level=warning";
        case LevelFilter::error:
            return "level=error";
    }
    return "";
}

}  // namespace

ModelLog::ModelLog(ModelMachine& machine, std::string path)
    : loop_(machine.loop),
      disk_(machine.disk),
      announcements_(machine.announcements),
      path_(std::move(path)) {}

ModelLog::~ModelLog() {
    stop();
}

void ModelLog::start() {
    reload();
    timer_ = loop_.every(period, [this] { poll(); });
}

void ModelLog::stop() {
    ModelLoop::cancel(timer_);
}

bool ModelLog::canRead() const {
    const DiskFaults& faults = disk_.faults;
    const bool fails = faults.findingLog || faults.measuringLog || faults.readingLog;
    if (fails && disk_.files.contains(path_))
        reached<"log not readable">();
    if (!disk_.files.contains(path_))
        reached<"log not there">();
    return !fails && disk_.files.contains(path_);
}

void ModelLog::reload() {
    const std::string bytes = canRead() ? *disk_.files.at(path_) : "";
    offset_ = bytes.size();
    announce();
    lines_.clear();
    take(ModelText::lines(bytes));
}

void ModelLog::poll() {
    if (!disk_.files.contains(path_) || disk_.faults.findingLog || disk_.faults.measuringLog)
        return;
    const std::string& bytes = *disk_.files.at(path_);
    if (bytes.size() < offset_) {
        reached<"log became shorter">();
        return reload();
    }
    if (bytes.size() == offset_ || !canRead())
        return;
    const auto added = ModelText::lines(std::string_view(bytes).substr(offset_));
    offset_ = bytes.size();
    if (added.empty())
        return;
    announce();
    take(added);
}

void ModelLog::announce() {
    announcements_.push_back(LogView{lines_.size(), lines_.empty() ? "" : lines_.back()});
}

void ModelLog::take(std::vector<std::string> lines) {
    std::move(lines.begin(), lines.end(), std::back_inserter(lines_));
    if (lines_.size() > mostLines) {
        reached<"log cut to its last lines">();
        lines_.erase(lines_.begin(), lines_.end() - static_cast<std::ptrdiff_t>(mostLines));
    }
    filter();
}

std::string ModelLog::text() const {
    std::string all;
    for (std::size_t index = 0; index < filtered_.size(); ++index)
        all += (index > 0 ? "\n" : "") + filtered_[index];
    return all;
}

void ModelLog::clear() {
    announce();
    lines_.clear();
    filter();
}

void ModelLog::setQuery(const std::string& query) {
    query_ = query;
    filter();
}

void ModelLog::setLevel(LevelFilter level) {
    level_ = level;
    filter();
}

bool ModelLog::passes(const std::string& line) const {
    return (query_.empty() || ModelText::containsIgnoringCase(line, query_)) &&
           line.find(wordOf(level_)) != std::string::npos;
}

void ModelLog::filter() {
    const std::size_t before = filtered_.size();
    filtered_.clear();
    std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(filtered_),
                 [this](const std::string& line) { return passes(line); });
    if (filtered_.size() < lines_.size())
        reached<"lines that do not pass">();
    if (follow_ && filtered_.size() != before && !filtered_.empty()) {
        reached<"log scrolled to its end">();
        ++scrolls_;
    }
}

}  // namespace valdorn::simulation
