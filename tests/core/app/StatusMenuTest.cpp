#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "app/StatusMenu.h"
#include "support/RecordingStatusItem.h"

namespace valdorn {
namespace {

// AppDelegate renders the menu before it is shown; whoever makes one and shows it at once shows this.
TEST(StatusMenuTest, TellsOfAStoppedRunnerUntilItIsRendered) {
    RecordingStatusItem item;
    StatusMenu menu(item, {});
    ASSERT_EQ(item.menu, &menu.model());
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"statusLine", "Status: —"},
        {"buildLine", ""},
        {"startStop", "Start Runner"},
        {"restart", "Restart Runner"},
    };
    for (const auto& [id, title] : expected)
        EXPECT_EQ(item.menu->item(id).title, title);
    EXPECT_TRUE(item.menu->item("buildLine").hidden);
}

}  // namespace
}  // namespace valdorn
