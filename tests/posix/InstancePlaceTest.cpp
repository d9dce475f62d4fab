#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/InstancePlace.h"
#include "support/NoDescriptors.h"
#include "support/Skipping.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

namespace {

class InstancePlaceTest : public testing::Test {
protected:
    std::string folderFor(const std::vector<std::string>& environment) const {
        const auto place = InstancePlace::forHome(environment, home);
        return place ? place.value().folder : place.error().description;
    }

    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    std::string inState() const { return home + "/.local/state/valdorn"; }

    TemporaryFolder root;
    const std::string home = root / "home";
    const std::string runtime = root / "run";
    void SetUp() override {
        std::filesystem::create_directory(home);
        std::filesystem::create_directory(runtime);
    }
};

TEST_F(InstancePlaceTest, IsInTheRuntimeFolderAndPrivate) {
    EXPECT_EQ(folderFor({"A=b", "XDG_RUNTIME_DIR=" + runtime, "XDG_STATE_HOME=" + home}),
              runtime + "/valdorn");
    EXPECT_EQ(modeOf(runtime + "/valdorn"), 0700u);
    EXPECT_FALSE(std::filesystem::exists(home + "/valdorn"));
}

TEST_F(InstancePlaceTest, IsInTheStateFolderWithoutARuntimeFolder) {
    EXPECT_EQ(folderFor({"XDG_STATE_HOME=" + (root / "a/b")}), root / "a/b/valdorn");
    EXPECT_EQ(modeOf(root / "a/b/valdorn"), 0700u);
}

TEST_F(InstancePlaceTest, IsInTheHomeFoldersStateWithoutEither) {
    EXPECT_EQ(folderFor({}), inState());
    EXPECT_EQ(modeOf(inState()), 0700u);
}

TEST_F(InstancePlaceTest, IgnoresEmptyRelativeAndMissingFolders) {
    EXPECT_EQ(folderFor({"XDG_RUNTIME_DIR=", "XDG_STATE_HOME="}), inState());
    EXPECT_EQ(folderFor({"XDG_RUNTIME_DIR=run", "XDG_STATE_HOME=state"}), inState());
    EXPECT_EQ(folderFor({"XDG_RUNTIME_DIR=" + (root / "none")}), inState());
    EXPECT_FALSE(std::filesystem::exists(root / "none")) << "the session's to make";
}

TEST_F(InstancePlaceTest, PassesByARuntimeFolderWithAFileInTheWay) {
    std::ofstream(runtime + "/valdorn") << "";
    EXPECT_EQ(folderFor({"XDG_RUNTIME_DIR=" + runtime}), inState());
}

TEST_F(InstancePlaceTest, PassesByARuntimeFolderOfSomebodyElse) {
    if (geteuid() != 0)
        return leaveOut("only root can give folders away");
    std::filesystem::create_directory(runtime + "/valdorn");
    ASSERT_EQ(chown((runtime + "/valdorn").c_str(), 12345, 12345), 0);
    EXPECT_EQ(folderFor({"XDG_RUNTIME_DIR=" + runtime}), inState());
}

TEST_F(InstancePlaceTest, ClosesAFolderThatWasOpenToOthers) {
    std::filesystem::create_directory(runtime + "/valdorn");
    std::filesystem::permissions(runtime + "/valdorn", std::filesystem::perms::all);
    EXPECT_EQ(folderFor({"XDG_RUNTIME_DIR=" + runtime}), runtime + "/valdorn");
    EXPECT_EQ(modeOf(runtime + "/valdorn"), 0700u);
}

TEST_F(InstancePlaceTest, SaysReadablyWhenNoFolderCanBeHad) {
    std::ofstream(home + "/.local") << "a file in the way";
    EXPECT_EQ(folderFor({}), "No private folder can be had at " + inState() + ": Not a directory");
}

TEST_F(InstancePlaceTest, AShortageIsToldFromARefusalForGood) {
    if (!canDoWithoutDescriptors)
        GTEST_SKIP() << whyDescriptorsAreNeeded;
    std::optional<Result<InstancePlace, PlaceRefusal>> place;
    for (const std::string& variable : {"XDG_RUNTIME_DIR=" + runtime, "XDG_STATE_HOME=" + home}) {
        {
            const NoDescriptors none;
            place.emplace(InstancePlace::forHome({variable}, home));
        }
        ASSERT_FALSE(place->ok()) << variable;
        EXPECT_TRUE(place->error().isShortage) << variable;
    }
    EXPECT_FALSE(std::filesystem::exists(inState())) << "where no other start would look";

    std::ofstream(home + "/.local") << "a file in the way";
    EXPECT_FALSE(InstancePlace::forHome({}, home).error().isShortage);
}

TEST_F(InstancePlaceTest, NamesItsFilesByTheHomeFolder) {
    const auto place = InstancePlace::forHome({"XDG_RUNTIME_DIR=" + runtime}, home);
    ASSERT_TRUE(place.ok());
    const std::string key = place.value().key;
    EXPECT_EQ(key, instanceKeyOf(home));
    EXPECT_EQ(place.value().lockPath(), runtime + "/valdorn/" + key + ".lock");
    EXPECT_EQ(place.value().ledgerPath(), runtime + "/valdorn/" + key + ".daemons");
}

TEST_F(InstancePlaceTest, KeysAreStableAndTellHomesApart) {
    EXPECT_EQ(instanceKeyOf("/"), "af63a24c860189fe");
    EXPECT_EQ(instanceKeyOf("/no/such/home").size(), 16u);
    EXPECT_NE(instanceKeyOf("/no/such/home"), instanceKeyOf("/no/such/house"));
}

TEST_F(InstancePlaceTest, TwoWaysToOneHomeMeet) {
    std::filesystem::create_symlink(home, root / "link");
    EXPECT_EQ(instanceKeyOf(root / "link"), instanceKeyOf(home));
    EXPECT_EQ(instanceKeyOf(home + "/"), instanceKeyOf(home));
}

}  // namespace

}  // namespace valdorn
