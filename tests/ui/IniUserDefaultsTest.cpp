#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <optional>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "contracts/UserDefaultsContract.h"
#include "platform/qt/IniUserDefaults.h"

namespace valdorn {
namespace {

class IniDomain {
public:
    IniDomain() { reopen(); }
    UserDefaults& defaults() { return *defaults_; }
    void reopen() {
        defaults_.emplace(folder_.filePath(QStringLiteral("valdorn/valdorn.ini")).toStdString());
    }

private:
    const QTemporaryDir folder_;
    std::optional<IniUserDefaults> defaults_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Ini, UserDefaultsContract, IniDomain);

class IniUserDefaultsTest : public testing::Test {
protected:
    std::string path() const {
        return folder_.filePath(QStringLiteral("v/valdorn.ini")).toStdString();
    }

    QByteArray content() const {
        QFile file(QString::fromStdString(path()));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

    void writeByHand(const QByteArray& bytes) const {
        QDir(folder_.path()).mkpath(QStringLiteral("v"));
        QFile file(QString::fromStdString(path()));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    // Sets a value that cannot be written now.
    void setInMemoryOnly(IniUserDefaults& defaults) const {
        defaults.setString("labels", "a");
        EXPECT_EQ(defaults.string("labels"), "a");
        EXPECT_EQ(content(), QByteArray());
    }

    const QTemporaryDir folder_;
};

TEST_F(IniUserDefaultsTest, MissingFileHoldsNothingAndIsNotMade) {
    const IniUserDefaults defaults(path());
    EXPECT_EQ(defaults.string("labels"), std::nullopt);
    EXPECT_FALSE(defaults.boolean("hasConnected"));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(path())));
}

TEST_F(IniUserDefaultsTest, WrittenValueIsOnTheDiskAtOnce) {
    IniUserDefaults defaults(path());
    defaults.setString("labels", "a,b; c=d \"e\" \\ —");
    defaults.setBoolean("hasConnected", true);
    const IniUserDefaults again(path());
    EXPECT_EQ(again.string("labels"), "a,b; c=d \"e\" \\ —");
    EXPECT_TRUE(again.boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, CommasWrittenByHandStayPartOfTheText) {
    writeByHand("[General]\nlabels=ubuntu-latest:docker://node:20,host:host\n");
    EXPECT_EQ(IniUserDefaults(path()).string("labels"), "ubuntu-latest:docker://node:20,host:host");
}

TEST_F(IniUserDefaultsTest, KeysBeforeAnySectionAreRead) {
    writeByHand("hasConnected=true\ninstanceURL=https://git.example\n");
    const IniUserDefaults defaults(path());
    EXPECT_TRUE(defaults.boolean("hasConnected"));
    EXPECT_EQ(defaults.string("instanceURL"), "https://git.example");
}

TEST_F(IniUserDefaultsTest, EqualValueIsNotWrittenAgain) {
    IniUserDefaults defaults(path());
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path())));
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    EXPECT_EQ(content(), QByteArray());
}

TEST_F(IniUserDefaultsTest, FallbacksLiveInMemoryOnly) {
    IniUserDefaults defaults(path());
    defaults.registerFallbacks({{"labels", "fallback"}});
    defaults.setString("instanceURL", "x");
    EXPECT_TRUE(content().contains("instanceURL=x"));
    EXPECT_FALSE(content().contains("fallback"));
}

TEST_F(IniUserDefaultsTest, OthersKeysInTheFileAreKept) {
    writeByHand("[General]\nforeign=1\n\n[Other]\nkey=value\n");
    IniUserDefaults defaults(path());
    defaults.setString("labels", "a");
    EXPECT_TRUE(content().contains("foreign=1"));
    EXPECT_TRUE(content().contains("key=value"));
}

TEST_F(IniUserDefaultsTest, ValueHoldsInMemoryWhenTheDiskRefuses) {
    QFile inTheWay(folder_.filePath(QStringLiteral("v")));
    ASSERT_TRUE(inTheWay.open(QFile::WriteOnly));
    IniUserDefaults defaults(path());
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_TRUE(defaults.boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, NamedPipeIsNotWaitedFor) {
    QDir(folder_.path()).mkpath(QStringLiteral("v"));
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    IniUserDefaults defaults(path());
    EXPECT_EQ(defaults.string("labels"), std::nullopt);
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_TRUE(defaults.boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, NamedPipeThatComesLaterIsNotWaitedFor) {
    writeByHand("[General]\nforeign=1\n");
    IniUserDefaults defaults(path());
    ASSERT_EQ(defaults.string("foreign"), "1");
    ASSERT_EQ(unlink(path().c_str()), 0);
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    defaults.setString("labels", "a");
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_FALSE(QFileInfo(QString::fromStdString(path())).isFile());
}

TEST_F(IniUserDefaultsTest, WhatIsNoLockIsNotWaitedForInItsPlace) {
    writeByHand("");
    const std::string lock = path() + ".lock";
    IniUserDefaults defaults(path());
    ASSERT_EQ(mkfifo(lock.c_str(), 0600), 0);
    setInMemoryOnly(defaults);
    ASSERT_EQ(unlink(lock.c_str()), 0);
    ASSERT_EQ(mkdir(lock.c_str(), 0700), 0);
    defaults.setBoolean("hasConnected", true);
    EXPECT_TRUE(defaults.boolean("hasConnected"));
    EXPECT_EQ(content(), QByteArray());
}

TEST_F(IniUserDefaultsTest, ALockThatSomebodyKeepsIsNotWaitedForWithoutEnd) {
    writeByHand("");
    QLockFile kept(QString::fromStdString(path() + ".lock"));
    ASSERT_TRUE(kept.lock());
    IniUserDefaults defaults(path());
    setInMemoryOnly(defaults);
    kept.unlock();
    // A later value is written, and is the one that counts.
    defaults.setString("labels", "b");
    EXPECT_EQ(defaults.string("labels"), "b");
    EXPECT_EQ(IniUserDefaults(path()).string("labels"), "b");
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(path() + ".lock")));
}

}  // namespace
}  // namespace valdorn
