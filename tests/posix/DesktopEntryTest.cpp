#include <gtest/gtest.h>

#include "platform/posix/DesktopEntry.h"

namespace valdorn {
namespace {

constexpr std::string_view everyday =
    "# Written by hand\n"
    "\n"
    "[Desktop Entry]\n"
    "Type=Application\n"
    "Name[de] = Waldohr \n"
    "Exec=/old/valdorn\n"
    "\n"
    "[Desktop Action quit]\n"
    "Exec=/foreign\n";

TEST(DesktopEntryTest, KeepsEveryByteThatIsNotChanged) {
    for (const std::string_view text :
         {everyday, std::string_view(), std::string_view("\n"), std::string_view("no end"),
          std::string_view("[Desktop Entry]\r\nA=1\r\n"),
          std::string_view("\xff\xfe\0garbage", 10)})
        EXPECT_EQ(DesktopEntry(text).text(), text);
}

TEST(DesktopEntryTest, ReadsTheGroupsValuesOnly) {
    const DesktopEntry entry(everyday);
    EXPECT_EQ(entry.value("Type"), "Application");
    EXPECT_EQ(entry.value("Exec"), "/old/valdorn");
    EXPECT_EQ(entry.value("Name[de]"), "Waldohr");
    EXPECT_EQ(entry.value("Name"), std::nullopt);
}

TEST(DesktopEntryTest, ReadsBlanksAndLineEndsOfAllSorts) {
    const DesktopEntry entry(" [Desktop Entry] \r\n\tA = b=c \r\nEmpty=\nLast=x");
    EXPECT_EQ(entry.value("A"), "b=c");
    EXPECT_EQ(entry.value("Empty"), "");
    EXPECT_EQ(entry.value("Last"), "x");
}

TEST(DesktopEntryTest, OfAKeyThatStandsTwiceTheLastCounts) {
    DesktopEntry entry("[Desktop Entry]\nA=1\n[Other]\nA=2\n[Desktop Entry]\nA=3\n");
    EXPECT_EQ(entry.value("A"), "3");
    entry.set("A", "4");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\nA=4\n[Other]\nA=2\n[Desktop Entry]\nA=4\n");
}

TEST(DesktopEntryTest, SetsAValueInItsPlace) {
    DesktopEntry entry(everyday);
    entry.set("Exec", "/new");
    std::string expected(everyday);
    expected.replace(expected.find("/old/valdorn"), 12, "/new");
    EXPECT_EQ(entry.text(), expected);
    EXPECT_EQ(entry.value("Exec"), "/new");
}

TEST(DesktopEntryTest, AddsAKeyAtTheEndOfTheGroup) {
    DesktopEntry entry(everyday);
    entry.set("Hidden", "true");
    std::string expected(everyday);
    expected.insert(expected.find("\n[Desktop Action"), "Hidden=true\n");
    EXPECT_EQ(entry.text(), expected);
    EXPECT_EQ(entry.value("Hidden"), "true");
}

TEST(DesktopEntryTest, MakesTheGroupWhenItIsMissing) {
    DesktopEntry entry;
    entry.set("A", "1");
    entry.set("B", "2");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\nA=1\nB=2\n");

    DesktopEntry other("[Other]\nA=2");
    other.set("A", "1");
    EXPECT_EQ(other.text(), "[Other]\nA=2\n[Desktop Entry]\nA=1\n");
}

TEST(DesktopEntryTest, KeepsTheLineEndsOfTheFile) {
    DesktopEntry entry("[Desktop Entry]\r\nA=1\r\n");
    entry.set("A", "2");
    entry.set("B", "3");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\r\nA=2\r\nB=3\r\n");
}

TEST(DesktopEntryTest, AddsALineEndToALastLineThatHasNone) {
    DesktopEntry entry("[Desktop Entry]\nA=1");
    entry.set("B", "2");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\nA=1\nB=2\n");
}

TEST(DesktopEntryTest, ACarriageReturnAtTheEndIsNoLineEnd) {
    DesktopEntry entry("[Desktop Entry]\nA=1\r");
    entry.set("B", "2");
    EXPECT_EQ(entry.text(), "[Desktop Entry]\nA=1\r\nB=2\r\n");

    DesktopEntry other("[Other]\nA=2\r");
    other.set("A", "1");
    EXPECT_EQ(other.text(), "[Other]\nA=2\r\n[Desktop Entry]\nA=1\n");
}

TEST(DesktopEntryTest, FindsLinesThatStrictReadersRefuse) {
    EXPECT_TRUE(DesktopEntry(everyday).isWellFormed());
    EXPECT_TRUE(DesktopEntry().isWellFormed());
    for (const char* const line : {"nonsense\n", "=value\n", "[Open\n"}) {
        DesktopEntry entry(std::string("[Desktop Entry]\nA=1\n") + line + "B=2\n");
        EXPECT_FALSE(entry.isWellFormed()) << line;
        entry.dropMalformedLines();
        EXPECT_EQ(entry.text(), "[Desktop Entry]\nA=1\nB=2\n");
        EXPECT_TRUE(entry.isWellFormed());
    }
    EXPECT_FALSE(DesktopEntry("A=before any group\n[Desktop Entry]\n").isWellFormed());
}

TEST(DesktopEntryTest, KnowsWhenItHoldsNothingForeign) {
    const std::vector<std::string_view> keys = {"A", "B"};
    EXPECT_TRUE(DesktopEntry().holdsOnly(keys));
    EXPECT_TRUE(DesktopEntry("\n[Desktop Entry]\nA=1\n\n").holdsOnly(keys));
    EXPECT_FALSE(DesktopEntry("[Desktop Entry]\nA=1\nC=1\n").holdsOnly(keys));
    EXPECT_FALSE(DesktopEntry("[Desktop Entry]\nA[de]=1\n").holdsOnly(keys));
    EXPECT_FALSE(DesktopEntry("# mine\n[Desktop Entry]\nA=1\n").holdsOnly(keys));
    EXPECT_FALSE(DesktopEntry("[Desktop Entry]\nA=1\n[Other]\n").holdsOnly(keys));
    EXPECT_FALSE(DesktopEntry("[Desktop Entry]\nA=1\n[Other]\nA=1\n").holdsOnly(keys));
    EXPECT_FALSE(DesktopEntry("[Desktop Entry]\nnonsense\n").holdsOnly(keys));
}

TEST(DesktopEntryTest, EscapesValues) {
    EXPECT_EQ(escapedValue("plain text"), "plain text");
    EXPECT_EQ(escapedValue("  two"), "\\s two");
    EXPECT_EQ(escapedValue("two  "), "two \\s");
    EXPECT_EQ(escapedValue("a\\b\nc\td\re"), "a\\\\b\\nc\\td\\re");
    for (const char* const text : {"", " ", "  a ", "a\\n", "\\", "\\\\s", "\n\t\r"})
        EXPECT_EQ(unescapedValue(escapedValue(text)), text);
    EXPECT_EQ(unescapedValue("a\\xb\\"), "a\\xb\\");
}

TEST(DesktopEntryTest, QuotesTheProgramOfAnExec) {
    EXPECT_EQ(execValue("/usr/bin/valdorn"), "\"/usr/bin/valdorn\"");
    EXPECT_EQ(execValue("/my apps/valdorn"), "\"/my apps/valdorn\"");
    EXPECT_EQ(execValue("/100%u/x"), "\"/100%%u/x\"");
    EXPECT_EQ(execValue("/a\"b"), "\"/a\\\\\"b\"");
    EXPECT_EQ(execValue("/a`b$c"), "\"/a\\\\`b\\\\$c\"");
    EXPECT_EQ(execValue("/a\\b"), "\"/a\\\\\\\\b\"");
    EXPECT_EQ(execValue("/a\nb\tc"), "\"/a\\nb\\tc\"");
}

TEST(DesktopEntryTest, ReadsTheProgramOfAnExec) {
    for (const std::string path : {"/usr/bin/valdorn", "/my apps/v", "/100%u/%%/x", "/a\"b`c$d\\e",
                                   "/a\nb\tc\rd", "/~<>|&;*?#()'", "/trailing\\", "/Zoë/鸟", "/%"})
        EXPECT_EQ(programOfExec(execValue(path)), path);
    EXPECT_EQ(programOfExec("/usr/bin/valdorn --quiet %U"), "/usr/bin/valdorn");
    EXPECT_EQ(programOfExec("valdorn"), "valdorn");
    EXPECT_EQ(programOfExec("\"/my apps/v\" \"an argument\""), "/my apps/v");
    EXPECT_EQ(programOfExec(""), "");
}

}  // namespace
}  // namespace valdorn
