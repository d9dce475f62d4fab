#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "contracts/BundleResourcesContract.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/InstalledResources.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

void putFile(const std::string& path) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << "x";
}

// An executable somewhere in a temporary folder, with its resources in another place there.
class LayoutFixture {
public:
    LayoutFixture(const std::string& executable, std::string place)
        : resources_(folder_ / executable), place_(std::move(place)) {}

    BundleResources& resources() { return resources_; }
    std::string ship(const std::string& name) {
        putFile(folder_ / place_ + "/" + name);
        return folder_ / place_ + "/" + name;
    }
    void withdraw(const std::string& name) {
        std::filesystem::remove(folder_ / place_ + "/" + name);
    }

private:
    TemporaryFolder folder_;
    InstalledResources resources_;
    const std::string place_;
};

class DevelopmentFixture : public LayoutFixture {
public:
    DevelopmentFixture() : LayoutFixture("build/valdorn", "build/resources") {}
};

class PrefixFixture : public LayoutFixture {
public:
    PrefixFixture() : LayoutFixture("usr/bin/valdorn", "usr/lib/valdorn") {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Development, BundleResourcesContract, DevelopmentFixture);
INSTANTIATE_TYPED_TEST_SUITE_P(Prefix, BundleResourcesContract, PrefixFixture);

TEST(InstalledResourcesTest, BesideTheExecutableGoesBeforeThePrefix) {
    const TemporaryFolder folder;
    putFile(folder / "usr/lib/valdorn/act_runner");
    putFile(folder / "usr/bin/resources/act_runner");
    EXPECT_EQ(InstalledResources(folder / "usr/bin/valdorn").path("act_runner"),
              folder / "usr/bin/resources/act_runner");
}

TEST(InstalledResourcesTest, OnlyAFolderNamedBinHasAPrefix) {
    const TemporaryFolder folder;
    putFile(folder / "lib/valdorn/act_runner");
    EXPECT_EQ(InstalledResources(folder / "build/valdorn").path("act_runner"), std::nullopt);
    EXPECT_EQ(InstalledResources(folder / "bin/valdorn").path("act_runner"),
              folder / "lib/valdorn/act_runner");
}

TEST(InstalledResourcesTest, AFolderOfThatNameIsNoResource) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "bin/resources/act_runner");
    EXPECT_EQ(InstalledResources(folder / "bin/valdorn").path("act_runner"), std::nullopt);
}

TEST(InstalledResourcesTest, AnUnknownExecutableHasNoResources) {
    const TemporaryFolder folder;
    putFile(folder / "resources/act_runner");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(InstalledResources("").path("act_runner"), std::nullopt);
    std::filesystem::current_path(before);
}

TEST(ExecutablePathTest, IsThisProgram) {
    const std::string path = executablePath();
    EXPECT_TRUE(path.starts_with('/'));
    EXPECT_EQ(std::filesystem::path(path).filename(), "posix_tests");
    EXPECT_TRUE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace valdorn
