#include "ui/status/UpdateHints.h"

#include "update/UpdateCheck.h"

namespace valdorn {

namespace {

// The words decide about the colour: who reads "available" sees it in orange.
RunnerRowContent::Hint hintOf(const std::string& version, const std::string& latest) {
    std::string text = UpdateCheck::isNewer(latest, version) ? "update: " + latest + " available"
                                                             : "runner is up to date";
    const bool isOffer = text.find("available") != std::string::npos;
    return {std::move(text), isOffer ? SystemColor::orange : SystemColor::secondary};
}

}  // namespace

void UpdateHints::setLatest(const std::optional<std::string>& latest) {
    if (latest_ == latest)
        return;
    latest_ = latest;
    hints_.clear();
}

const RunnerRowContent::Hint* UpdateHints::of(const std::optional<std::string>& version) {
    if (!latest_ || !version)
        return nullptr;
    if (const auto known = hints_.find(*version); known != hints_.end())
        return &known->second;
    if (hints_.size() == mostVersions)
        hints_.clear();
    return &hints_.emplace(*version, hintOf(*version, *latest_)).first->second;
}

}  // namespace valdorn
