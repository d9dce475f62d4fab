#include <cstddef>
#include <string>

#include <unistd.h>

#include "platform/posix/BirthNote.h"
#include "posix/HiddenChild.h"
#include "posix/LedgerStage.h"
#include "support/NoDescriptors.h"
#include "support/Skipping.h"

namespace valdorn {

namespace {

class BirthNoteTest : public LedgerStage {
protected:
    static bool isOver(const std::string& note) { return hasSurelyEnded(note, bootId()); }

    // As if it had been born a moment earlier.
    static std::string withOtherBirth(std::string note, pid_t pid) {
        const std::string ticks = ' ' + std::to_string(birthOf(pid)->startTicks) + ' ';
        const std::string others = ' ' + std::to_string(birthOf(pid)->startTicks - 1) + ' ';
        const auto place = note.find(ticks);
        EXPECT_NE(place, std::string::npos);
        return note.replace(place, ticks.size(), others);
    }
};

TEST_F(BirthNoteTest, IsOverWhenNobodyHasTheId) {
    EXPECT_TRUE(isOver(noteOfNobody()));
}

TEST_F(BirthNoteTest, IsOverWhenSomebodyElseHasTheId) {
    EXPECT_TRUE(isOver(withOtherBirth(noteOf(getpid()), getpid())));
}

TEST_F(BirthNoteTest, IsNotOverWhileTheProcessLives) {
    EXPECT_FALSE(isOver(noteOf(getpid())));
    EXPECT_FALSE(isOver(noteOf(startHanging().id())));
}

TEST_F(BirthNoteTest, IsNotOverWhenTheProcessHasTakenAnotherUsersRights) {
    if (geteuid() != 0)
        return leaveOut("only root becomes another user");
    const HiddenChild child;
    const WithoutPower powerless;
    ASSERT_NE(birthOf(child.id())->owner, geteuid());
    EXPECT_FALSE(isOver(noteOf(child.id())));
    EXPECT_TRUE(isOver(withOtherBirth(noteOf(child.id()), child.id())));
}

TEST_F(BirthNoteTest, IsOverForSureOnlyAsAWhole) {
    const std::string note = noteOfNobody();
    for (std::size_t length = 0; length < note.size(); ++length)
        EXPECT_FALSE(isOver(note.substr(0, length))) << length;
}

TEST_F(BirthNoteTest, SaysNothingForSureOfAnotherBoot) {
    EXPECT_FALSE(hasSurelyEnded(noteOfNobody(), "another"));
    const std::string note = noteOfNobody();
    EXPECT_FALSE(hasSurelyEnded("boot \n" + note.substr(note.find('\n') + 1), ""));
}

TEST_F(BirthNoteTest, CanTellWithoutDescriptors) {
    if (!canDoWithoutDescriptors)
        GTEST_SKIP() << whyDescriptorsAreNeeded;
    const std::string boot = bootId();
    const std::string mine = noteOf(getpid());
    const std::string others = withOtherBirth(mine, getpid());
    const std::string nobodys = noteOfNobody();
    const NoDescriptors none;
    EXPECT_TRUE(hasSurelyEnded(nobodys, boot));
    EXPECT_FALSE(hasSurelyEnded(mine, boot));
    EXPECT_FALSE(hasSurelyEnded(others, boot)) << "who has the id cannot be seen";
}

}  // namespace

}  // namespace valdorn
