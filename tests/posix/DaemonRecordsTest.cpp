#include <gtest/gtest.h>

#include "platform/posix/DaemonRecords.h"

namespace valdorn {

namespace {

const ProcessFacts plain{12, 3456, 1000, "/usr/bin/act_runner", "/home/me/runner"};
const ProcessFacts odd{7, 8, 0, "/a b\\n/tab\there", "/line\nfeed/\\"};

TEST(DaemonRecordsTest, WritesWhatItReads) {
    const DaemonRecords records{"boot-1", {plain, odd}};
    const auto read = daemonRecordsIn(textOf(records));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->boot, "boot-1");
    EXPECT_EQ(read->daemons, records.daemons);
}

TEST(DaemonRecordsTest, WritesAFormatThatStays) {
    EXPECT_EQ(textOf({"boot-1", {plain, odd}}),
              "valdorn daemons 1\n"
              "boot boot-1\n"
              "daemon\t12\t3456\t1000\t/usr/bin/act_runner\t/home/me/runner\n"
              "daemon\t7\t8\t0\t/a b\\\\n/tab\\there\t/line\\nfeed/\\\\\n"
              "end\n");
}

TEST(DaemonRecordsTest, ReadsNothingFromATextCutAnywhere) {
    const std::string text = textOf({"boot-1", {plain, odd}});
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(daemonRecordsIn(text.substr(0, length))) << length;
    EXPECT_TRUE(daemonRecordsIn(text));
}

TEST(DaemonRecordsTest, ReadsNothingFromATextWithAnySenselessLine) {
    const std::string head = "valdorn daemons 1\nboot b\n";
    for (const std::string line :
         {"daemon\tx\t1\t1\t/e\t/f", "daemon\t0\t1\t1\t/e\t/f", "daemon\t-1\t1\t1\t/e\t/f",
          "daemon\t1\t1x\t1\t/e\t/f", "daemon\t1\t1\t\t/e\t/f", "daemon\t1\t1\t1\t/e",
          "daemon\t1\t1\t1\t/e\t/f\t/g", "demon\t1\t1\t1\t/e\t/f", "daemon\t1\t1\t1\t/e\\x\t/f",
          "daemon\t1\t1\t1\t/e\t/f\\", "daemon\t99999999999\t1\t1\t/e\t/f", ""})
        EXPECT_FALSE(daemonRecordsIn(head + line + "\nend\n")) << line;
    EXPECT_TRUE(daemonRecordsIn(head + "daemon\t1\t1\t1\t/e\t/f\nend\n"));
    EXPECT_FALSE(daemonRecordsIn("valdorn daemons 2\nboot b\nend\n"));
    EXPECT_FALSE(daemonRecordsIn("valdorn daemons 1\nshoe b\nend\n"));
    EXPECT_FALSE(daemonRecordsIn(head + "end\nmore"));
}

}  // namespace

}  // namespace valdorn
