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
#include "platform/posix/PosixFileSystem.h"
#include "platform/qt/IniUserDefaults.h"

namespace valdorn {
namespace {

class IniDomain {
public:
    IniDomain() { reopen(); }
    UserDefaults& defaults() { return *defaults_; }
    void reopen() {
        defaults_.emplace(files_,
                          folder_.filePath(QStringLiteral("valdorn/valdorn.ini")).toStdString());
    }

private:
    const QTemporaryDir folder_;
    PosixFileSystem files_;
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
    PosixFileSystem files_;
};

TEST_F(IniUserDefaultsTest, MissingFileHoldsNothingAndIsNotMade) {
    const IniUserDefaults defaults(files_, path());
    EXPECT_EQ(defaults.string("labels"), std::nullopt);
    EXPECT_FALSE(defaults.boolean("hasConnected"));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(path())));
}

TEST_F(IniUserDefaultsTest, WrittenValueIsOnTheDiskAtOnce) {
    IniUserDefaults defaults(files_, path());
    defaults.setString("labels", "a,b; c=d \"e\" \\ —");
    defaults.setBoolean("hasConnected", true);
    const IniUserDefaults again(files_, path());
    EXPECT_EQ(again.string("labels"), "a,b; c=d \"e\" \\ —");
    EXPECT_TRUE(again.boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, CommasWrittenByHandStayPartOfTheText) {
    writeByHand("[General]\nlabels=ubuntu-latest:docker://node:20,host:host\n");
    EXPECT_EQ(IniUserDefaults(files_, path()).string("labels"),
              "ubuntu-latest:docker://node:20,host:host");
}

TEST_F(IniUserDefaultsTest, KeysBeforeAnySectionAreRead) {
    writeByHand("hasConnected=true\ninstanceURL=https://git.example\n");
    const IniUserDefaults defaults(files_, path());
    EXPECT_TRUE(defaults.boolean("hasConnected"));
    EXPECT_EQ(defaults.string("instanceURL"), "https://git.example");
}

TEST_F(IniUserDefaultsTest, EqualValueIsNotWrittenAgain) {
    IniUserDefaults defaults(files_, path());
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path())));
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    EXPECT_EQ(content(), QByteArray());
}

TEST_F(IniUserDefaultsTest, FallbacksLiveInMemoryOnly) {
    IniUserDefaults defaults(files_, path());
    defaults.registerFallbacks({{"labels", "fallback"}});
    defaults.setString("instanceURL", "x");
    EXPECT_TRUE(content().contains("instanceURL=x"));
    EXPECT_FALSE(content().contains("fallback"));
}

TEST_F(IniUserDefaultsTest, OthersKeysInTheFileAreKept) {
    writeByHand("[General]\nforeign=1\n\n[Other]\nkey=value\n");
    IniUserDefaults defaults(files_, path());
    defaults.setString("labels", "a");
    EXPECT_TRUE(content().contains("foreign=1"));
    EXPECT_TRUE(content().contains("key=value"));
}

TEST_F(IniUserDefaultsTest, ValueHoldsInMemoryWhenTheDiskRefuses) {
    QFile inTheWay(folder_.filePath(QStringLiteral("v")));
    ASSERT_TRUE(inTheWay.open(QFile::WriteOnly));
    IniUserDefaults defaults(files_, path());
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_TRUE(defaults.boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, NamedPipeIsNotWaitedFor) {
    QDir(folder_.path()).mkpath(QStringLiteral("v"));
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    IniUserDefaults defaults(files_, path());
    EXPECT_EQ(defaults.string("labels"), std::nullopt);
    defaults.setString("labels", "a");
    defaults.setBoolean("hasConnected", true);
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_TRUE(defaults.boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, NamedPipeThatComesLaterIsNotWaitedFor) {
    writeByHand("[General]\nforeign=1\n");
    IniUserDefaults defaults(files_, path());
    ASSERT_EQ(defaults.string("foreign"), "1");
    ASSERT_EQ(unlink(path().c_str()), 0);
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    defaults.setString("labels", "a");
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_FALSE(QFileInfo(QString::fromStdString(path())).isFile());
}

TEST_F(IniUserDefaultsTest, AFileThatNobodyWroteByHandIsOverlookedAndLeftAsItIs) {
    const QByteArray known = "[General]\nlabels=a\n";
    const QByteArray lists = QByteArray(R"(\0\0\0\x9\0\0\0\x1)").repeated(100'000);
    for (const QByteArray& strange :
         {known + "other=@Variant(" + lists + ")\n", known + "other=@Variant(\\0\\0\\0\\x7f)\n",
          known + "other=\"@DateTime(x)\"\n", known + "@Variant()=1\n",
          known + "runnerName=" + QByteArray(65536, 'x') + "\n"}) {
        SCOPED_TRACE(strange.left(60).toStdString());
        writeByHand(strange);
        IniUserDefaults defaults(files_, path());
        EXPECT_EQ(defaults.string("labels"), std::nullopt);
        defaults.setString("labels", "b");
        EXPECT_EQ(defaults.string("labels"), "b");
        EXPECT_TRUE(content() == strange);
    }
}

TEST_F(IniUserDefaultsTest, AFileThatBecomesStrangeIsNotReadForAWrite) {
    writeByHand("[General]\nlabels=a\n");
    IniUserDefaults defaults(files_, path());
    ASSERT_EQ(defaults.string("labels"), "a");
    writeByHand("[General]\nother=@Variant(\\0\\0\\0\\x7f)\n");
    defaults.setString("labels", "b");
    EXPECT_EQ(defaults.string("labels"), "b");
    EXPECT_FALSE(content().contains("labels"));
}

TEST_F(IniUserDefaultsTest, AFileAsLongAsItMayBeIsRead) {
    QByteArray longest = "[General]\nlabels=a\nother=";
    longest += QByteArray(65536 - longest.size(), 'x');
    writeByHand(longest);
    EXPECT_EQ(IniUserDefaults(files_, path()).string("labels"), "a");
}

TEST_F(IniUserDefaultsTest, TextThatLooksLikeAValueOfQtIsText) {
    for (const std::string text :
         {"@Variant(\\0)", "@DateTime(x)", "@@Variant(x)", "x@Variant(y)", "a,@Variant(b)",
          " @Variant(x)", "\"@Variant(x)", "\n@Variant(x)", "=@Variant(x)", ";@Variant(x)"}) {
        SCOPED_TRACE(text);
        IniUserDefaults(files_, path()).setString("labels", text);
        EXPECT_EQ(IniUserDefaults(files_, path()).string("labels"), text);
    }
}

TEST_F(IniUserDefaultsTest, APathThatIsNotUtf8IsNotTakenForAnother) {
    const std::string odd = folder_.path().toStdString() + "/h\xff";
    IniUserDefaults defaults(files_, odd + "/valdorn.ini");
    defaults.setString("labels", "a");
    EXPECT_EQ(defaults.string("labels"), "a");
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(IniUserDefaultsTest, WhatIsNoLockIsNotWaitedForInItsPlace) {
    writeByHand("");
    const std::string lock = path() + ".lock";
    IniUserDefaults defaults(files_, path());
    ASSERT_EQ(mkfifo(lock.c_str(), 0600), 0);
    setInMemoryOnly(defaults);
    ASSERT_EQ(unlink(lock.c_str()), 0);
    ASSERT_EQ(mkdir(lock.c_str(), 0700), 0);
    defaults.setBoolean("hasConnected", true);
    EXPECT_TRUE(defaults.boolean("hasConnected"));
    EXPECT_EQ(content(), QByteArray());
}

// The labels were set to "a" while somebody kept the lock.
class KeptLockTest : public IniUserDefaultsTest {
protected:
    KeptLockTest() {
        writeByHand("");
        QLockFile kept(QString::fromStdString(path() + ".lock"));
        EXPECT_TRUE(kept.lock());
        setInMemoryOnly(defaults_.emplace(files_, path()));
    }

    std::optional<std::string> labelsOnDisk() {
        return IniUserDefaults(files_, path()).string("labels");
    }

    std::optional<IniUserDefaults> defaults_;
};

TEST_F(KeptLockTest, IsNotWaitedForAndALaterValueCounts) {
    defaults_->setString("labels", "b");
    EXPECT_EQ(defaults_->string("labels"), "b");
    EXPECT_EQ(labelsOnDisk(), "b");
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(path() + ".lock")));
}

TEST_F(KeptLockTest, WhatItKeptFromTheDiskIsWrittenWhenItIsSetAgain) {
    defaults_->setString("labels", "a");
    EXPECT_EQ(labelsOnDisk(), "a");
}

TEST_F(KeptLockTest, WhatItKeptFromTheDiskIsWrittenWithTheNextValue) {
    defaults_->setBoolean("hasConnected", true);
    EXPECT_EQ(labelsOnDisk(), "a");
    EXPECT_TRUE(IniUserDefaults(files_, path()).boolean("hasConnected"));
}

TEST_F(IniUserDefaultsTest, TheFolderThatItMakesIsClosedToOthers) {
    IniUserDefaults defaults(files_, path());
    defaults.setBoolean("hasConnected", true);
    struct stat folder {};
    ASSERT_EQ(stat(folder_.filePath(QStringLiteral("v")).toUtf8().constData(), &folder), 0);
    EXPECT_EQ(folder.st_mode & 07777U, 0700U);
}

}  // namespace
}  // namespace valdorn
