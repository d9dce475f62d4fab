#pragma once

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/SystemLog.h"

namespace valdorn {

// What every SystemLog does. The fixture has:
//   SystemLog& log();
//   std::vector<std::string> lines();  // what has been logged, oldest first
template <typename Fixture>
class SystemLogContract : public testing::Test {
protected:
    Fixture fixture;
};

TYPED_TEST_SUITE_P(SystemLogContract);

TYPED_TEST_P(SystemLogContract, WritesEachTextAsOneLine) {
    const std::vector<std::string> lines{"Valdorn: first", "", "100%s of é failed, %n",
                                         std::string(9000, 'x'), "last"};
    for (const std::string& line : lines)
        this->fixture.log().write(line);
    EXPECT_EQ(this->fixture.lines(), lines);
}

TYPED_TEST_P(SystemLogContract, WritesNoMoreThanTheTextGiven) {
    this->fixture.log().write(std::string_view("only this, not that", 9));
    EXPECT_EQ(this->fixture.lines(), std::vector<std::string>{"only this"});
}

TYPED_TEST_P(SystemLogContract, LinesOfSeveralThreadsStayWhole) {
    std::vector<std::string> expected;
    std::vector<std::thread> writers;
    for (const char letter : std::string("abcd")) {
        const std::string line(200, letter);
        expected.insert(expected.end(), 50, line);
        writers.emplace_back([this, line] {
            for (int count = 0; count < 50; ++count)
                this->fixture.log().write(line);
        });
    }
    for (std::thread& writer : writers)
        writer.join();
    std::vector<std::string> lines = this->fixture.lines();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, expected);
}

REGISTER_TYPED_TEST_SUITE_P(SystemLogContract, WritesEachTextAsOneLine,
                            WritesNoMoreThanTheTextGiven, LinesOfSeveralThreadsStayWhole);

}  // namespace valdorn
