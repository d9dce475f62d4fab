#include <gtest/gtest.h>

#include "contracts/StatusItemContract.h"
#include "support/RecordingStatusItem.h"

namespace valdorn {
namespace {

class RecordedStatusItem {
public:
    StatusItem& item() { return item_; }
    void showBar() {}  // the record is the bar
    std::optional<StatusIcon> icon() const { return item_.spinning ? std::nullopt : item_.icon; }
    std::optional<int> spinnerLength() const {
        return item_.spinning ? std::optional(item_.length) : std::nullopt;
    }
    int changesSent() const { return item_.iconChanges + item_.spinnerStarts + item_.spinnerStops; }
    std::vector<std::string> menuTitles() const {
        std::vector<std::string> titles;
        for (const MenuItem& entry : item_.menu->items())
            titles.push_back(entry.title);
        return titles;
    }
    void choose(std::size_t entry) const { item_.menu->activate(item_.menu->items().at(entry).id); }

private:
    RecordingStatusItem item_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Recording, StatusItemContract, RecordedStatusItem);

TEST(RecordingStatusItemTest, CountsChangesUnderTheSpinnerToo) {
    RecordingStatusItem item;
    item.startSpinner();
    item.setIcon({"bird", SystemColor::green, "Idle"});
    item.clearIcon();
    EXPECT_EQ(item.iconChanges, 2);
    EXPECT_EQ(item.spinnerStarts, 1);
    EXPECT_EQ(item.spinnerStops, 0);
}

}  // namespace
}  // namespace valdorn
