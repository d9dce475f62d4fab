#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulation/Announcement.h"
#include "simulation/Marks.h"
#include "simulation/ModelLoop.h"

namespace valdorn::simulation {

// The check for a release by the rules: one request for each look while no tag is known, each
// with ten seconds to be answered.
class ModelUpdates {
public:
    ModelUpdates(ModelLoop& loop, Announcements& announcements)
        : loop_(loop), announcements_(announcements) {}

    std::optional<std::string> latest;

    // How many requests were ever made, those of earlier windows included.
    std::size_t requests() const { return timeouts_.size(); }

    void check() {
        if (latest)
            return reached<"tag is known already">();
        const std::size_t index = timeouts_.size();
        timeouts_.push_back(loop_.after(10000, [this, index] {
            reached<"request timed out">();
            timeouts_[index].reset();
        }));
    }

    // The answer to a request; `tag` is what its body says, if anything.
    void answer(std::size_t index, const std::optional<std::string>& tag) {
        if (!timeouts_[index])
            return reached<"answer that nobody waits for">();
        ModelLoop::cancel(timeouts_[index]);
        if (!tag)
            return reached<"answer without a tag">();
        if (latest)
            reached<"tag replaced by a later answer">();
        announcements_.push_back(ReleaseView{latest});
        latest = tag;
    }

    // The window's content goes, and with it what was asked for.
    void forget() {
        latest.reset();
        for (ModelLoop::Handle& timeout : timeouts_)
            ModelLoop::cancel(timeout);
    }

private:
    ModelLoop& loop_;
    Announcements& announcements_;
    std::vector<ModelLoop::Handle> timeouts_;  // empty once answered, timed out or dropped
};

}  // namespace valdorn::simulation
