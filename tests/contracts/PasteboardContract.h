#pragma once

#include <string>

#include <gtest/gtest.h>

#include "platform/Pasteboard.h"

namespace valdorn {

// What every Pasteboard does. The fixture has:
//   Pasteboard& pasteboard();
//   std::string content();  // the text that another program would paste
template <typename Fixture>
class PasteboardContract : public testing::Test {
protected:
    Fixture fixture;
};

TYPED_TEST_SUITE_P(PasteboardContract);

TYPED_TEST_P(PasteboardContract, KeepsTheTextAsItIs) {
    for (const std::string text : {"plain", " blanks around ", "two\nlines\twith a tab\n",
                                   "chmod +x “act_runner” — ✓", "鸟 🐦", "<b>no markup</b>"}) {
        this->fixture.pasteboard().setText(text);
        EXPECT_EQ(this->fixture.content(), text);
    }
}

TYPED_TEST_P(PasteboardContract, ATextReplacesTheOneBefore) {
    this->fixture.pasteboard().setText("before");
    this->fixture.pasteboard().setText("after");
    EXPECT_EQ(this->fixture.content(), "after");
    this->fixture.pasteboard().setText("");
    EXPECT_EQ(this->fixture.content(), "");
}

TYPED_TEST_P(PasteboardContract, SelectingTextLeavesTheClipboardAlone) {
    this->fixture.pasteboard().setText("copied");
    this->fixture.pasteboard().setSelectedText("selected");
    EXPECT_EQ(this->fixture.content(), "copied");
}

REGISTER_TYPED_TEST_SUITE_P(PasteboardContract, KeepsTheTextAsItIs, ATextReplacesTheOneBefore,
                            SelectingTextLeavesTheClipboardAlone);

}  // namespace valdorn
