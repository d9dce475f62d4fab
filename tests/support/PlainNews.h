#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runner/RunnerLog.h"

namespace valdorn {

// What one line says, each text looked for by itself.
inline RunnerNews plainNews(std::string_view line) {
    return {RunnerLog::version(line), RunnerLog::workflowJob(line), RunnerLog::event(line)};
}

// What applying news to a runner that shows a job does, step by step.
class AppliedNews {
public:
    explicit AppliedNews(std::string shown) : job_(std::move(shown)) {}

    void apply(const RunnerNews& news) {
        if (news.version)
            steps.push_back("version " + *news.version);
        if (news.job)
            show(*news.job);
        if (news.event.kind != RunnerLogEvent::Kind::unrelated)
            steps.push_back("event " + std::to_string(static_cast<int>(news.event.kind)) + " " +
                            news.event.repository);
        if (news.event.kind == RunnerLogEvent::Kind::declared)
            show("");
    }

    std::vector<std::string> steps;

private:
    void show(const std::string& job) {
        if (job_ != job)
            steps.push_back("job " + job);
        job_ = job;
    }

    std::string job_;
};

}  // namespace valdorn
