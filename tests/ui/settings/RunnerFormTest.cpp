#include <QAccessible>
#include <QInputMethodEvent>

#include "fleet/RunnerRecords.h"
#include "ui/PlainText.h"
#include "ui/SystemPalette.h"
#include "ui/WrappedLabel.h"
#include "ui/settings/SettingsTest.h"

namespace valdorn {
namespace {

class RunnerFormTest : public SettingsTest {
protected:
    static constexpr const char* recordFields[] = {"instanceURL", "name", "labels", "extraPath"};

    WrappedLabel& message() { return stage.find<WrappedLabel>("message"); }
    QColor messageColor() { return message().palette().color(QPalette::WindowText); }
    QColor textColor(SystemColor color) {
        return SystemPalette::text(color, message().parentWidget()->palette());
    }
    std::string title() { return stage.button("register").text().toStdString(); }
    // Types a token and registers the runner that is shown.
    void registerWith(const QString& token) {
        stage.type("token", token);
        click("register");
    }
};

TEST_F(RunnerFormTest, ShowsTheRecord) {
    show({"one"});
    stage.edit(0, &RunnerConfig::extraPath, "/opt/bin");
    EXPECT_EQ(text("instanceURL"), "https://git.example.org");
    EXPECT_EQ(text("name"), "one");
    EXPECT_EQ(text("labels"), "linux:host");
    EXPECT_EQ(text("extraPath"), "/opt/bin");
    EXPECT_EQ(text("token"), "");
}

TEST_F(RunnerFormTest, EmptyFieldsSayWhatBelongsThere) {
    show({"one"});
    EXPECT_EQ(stage.field("instanceURL").placeholderText(), QStringLiteral("http://host:3000"));
    EXPECT_EQ(stage.field("name").placeholderText(), QString());
    EXPECT_EQ(stage.field("labels").placeholderText(), QStringLiteral("macos,arm64"));
    EXPECT_EQ(stage.field("extraPath").placeholderText(),
              QStringLiteral("optional, colon-separated"));
    EXPECT_EQ(stage.field("token").placeholderText(), QString());
}

TEST_F(RunnerFormTest, FieldsStandInTheirOrder) {
    show({"one"});
    int above = 0;
    for (const char* const name :
         {"instanceURL", "name", "labels", "extraPath", "token", "help", "register"}) {
        const QRect place = placeOf(stage.find<QWidget>(name));
        EXPECT_GT(place.top(), above) << name;
        above = place.bottom();
    }
}

TEST_F(RunnerFormTest, EachKeystrokeIsTheRecordAndOneSave) {
    show({"one"});
    const auto saves = stage.world.files.contentReplacements.size();
    stage.type("instanceURL", QStringLiteral("/a"));
    EXPECT_EQ(stage.runner(0).config().instanceURL, "https://git.example.org/a");
    EXPECT_EQ(stage.world.files.contentReplacements.size(), saves + 2);
    stage.type("name", QStringLiteral(" b"));
    stage.type("labels", QStringLiteral(",c"));
    stage.type("extraPath", QStringLiteral(":d "));
    EXPECT_EQ(stage.runner(0).config(), (RunnerConfig{"r0", "one b", "https://git.example.org/a",
                                                      "linux:host,c", ":d ", false}));
}

TEST_F(RunnerFormTest, ShowingARecordSavesNothing) {
    show({"one", "two"});
    const auto saves = stage.world.files.contentReplacements.size();
    stage.clickRow(1);
    stage.clickRow(0);
    EXPECT_EQ(stage.world.files.contentReplacements.size(), saves);
}

TEST_F(RunnerFormTest, WhatIsTypedIsKeptToTheLetter) {
    show({"one"});
    const std::string hostile =
        "\xEF\xBB\xBF\t\x01\x7F \"quotes\" 'and' \\ / , : \xF0\x9F\x90\xA6"
        " \xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D e\xCC\x81 \n\r end ";
    for (const char* const name : recordFields) {
        stage.field(name).clear();
        stage.field(name).insert(PlainText::fromUtf8(hostile));
    }
    stage.settle();
    const RunnerConfig config = stage.runner(0).config();
    EXPECT_EQ(config.instanceURL, hostile);
    EXPECT_EQ(config.name, hostile);
    EXPECT_EQ(config.labels, hostile);
    EXPECT_EQ(config.extraPath, hostile);
    EXPECT_EQ(RunnerRecords::decode(*RunnerRecords::encode({config}))->front(), config);
}

TEST_F(RunnerFormTest, NoTextIsTooLong) {
    show({"one"});
    const QString text(100'000, QLatin1Char('x'));
    for (const char* const name : {"instanceURL", "name", "labels", "extraPath", "token"}) {
        stage.field(name).clear();
        stage.field(name).insert(text);
        stage.settle();
        EXPECT_EQ(stage.field(name).text().size(), text.size()) << name;
    }
    EXPECT_EQ(stage.runner(0).config().name.size(), 100'000U);
    EXPECT_EQ(stage.registration->token().size(), 100'000U);
    EXPECT_EQ(stage.view->minimumSizeHint(), QSize(620, 400));
}

TEST_F(RunnerFormTest, TextComposedByAnInputMethodCountsWhenItIsCommitted) {
    show({"one"});
    QInputMethodEvent composing(QStringLiteral("ni"), {});
    QCoreApplication::sendEvent(&stage.field("name"), &composing);
    EXPECT_EQ(stage.runner(0).config().name, "one");
    QInputMethodEvent committed;
    committed.setCommitString(QStringLiteral("你"));
    stage.field("name").end(false);
    QCoreApplication::sendEvent(&stage.field("name"), &committed);
    EXPECT_EQ(stage.runner(0).config().name, "one你");
}

TEST_F(RunnerFormTest, TypingKeepsCursorSelectionAndHistory) {
    show({"one"});
    stage.field("name").setFocus();
    stage.field("name").setCursorPosition(1);
    QTest::keyClicks(&stage.field("name"), QStringLiteral("xy"));
    stage.settle();
    EXPECT_EQ(text("name"), "oxyne");
    EXPECT_EQ(stage.field("name").cursorPosition(), 3);
    QTest::keyClick(&stage.field("name"), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(stage.runner(0).config().name, "one");
}

TEST_F(RunnerFormTest, TextThatIsOnlyLookedAtStaysAsItIs) {
    show({"one"});
    const std::string marked = "\xEF\xBB\xBFmarked";
    stage.edit(0, &RunnerConfig::name, marked);
    stage.type("labels", QStringLiteral("x"));
    EXPECT_EQ(stage.runner(0).config().name, marked);
    stage.field("name").home(false);
    stage.type("labels", QStringLiteral("y"));
    EXPECT_EQ(stage.field("name").cursorPosition(), 0) << "the field is not filled again";
}

TEST_F(RunnerFormTest, LongTextsShowTheirBeginning) {
    show({std::string(300, 'x')});
    EXPECT_EQ(stage.field("name").cursorPosition(), 0);
}

TEST_F(RunnerFormTest, ListThatChangesLeavesTheRowsAlone) {
    show({"one"});
    stage.type("name", QStringLiteral("!"));
    const QLineEdit* const before = &stage.field("name");
    stage.store->add("added elsewhere");
    stage.settle();
    EXPECT_EQ(&stage.field("name"), before);
    EXPECT_TRUE(stage.field("name").hasFocus());
}

TEST_F(RunnerFormTest, AnotherRunnerGetsRowsOfItsOwn) {
    show({"one", "two"});
    stage.type("name", QStringLiteral("!"));
    stage.clickRow(1);
    EXPECT_FALSE(stage.field("name").isUndoAvailable());
    EXPECT_EQ(text("name"), "two");
    stage.clickRow(0);
    EXPECT_EQ(text("name"), "one!");
}

TEST_F(RunnerFormTest, TokenIsHiddenAndReturnDoesNothing) {
    show({"one"});
    stage.type("token", QStringLiteral("secret"));
    EXPECT_EQ(stage.field("token").echoMode(), QLineEdit::Password);
    EXPECT_FALSE(stage.field("token").displayText().contains(QStringLiteral("secret")));
    QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&stage.field("token"));
    EXPECT_FALSE(seen->text(QAccessible::Value).contains(QStringLiteral("secret")));
    QTest::keyClick(&stage.field("token"), Qt::Key_Return);
    QTest::keyClick(&stage.field("token"), Qt::Key_Enter);
    stage.settle();
    EXPECT_FALSE(stage.registration->busy());
    EXPECT_EQ(text("token"), "secret");
}

TEST_F(RunnerFormTest, HelpStandsAsItIs) {
    show({"one"});
    EXPECT_EQ(stage.find<QLabel>("help").text().toStdString(),
              "Token: <gitea>/-/admin/actions/runners (or an org/repo → Settings → Runners).");
    EXPECT_EQ(stage.find<QLabel>("help").textFormat(), Qt::PlainText);
}

TEST_F(RunnerFormTest, ButtonNeedsTokenUrlAndName) {
    show({"one"});
    EXPECT_FALSE(isEnabled("register"));
    stage.type("token", QStringLiteral("t"));
    EXPECT_TRUE(isEnabled("register"));
    stage.field("instanceURL").clear();
    stage.settle();
    EXPECT_FALSE(isEnabled("register"));
    stage.type("instanceURL", QStringLiteral(" "));
    EXPECT_TRUE(isEnabled("register"));
    stage.field("name").clear();
    stage.settle();
    EXPECT_FALSE(isEnabled("register"));
    stage.type("name", QStringLiteral(" "));
    EXPECT_TRUE(isEnabled("register"));
    stage.field("token").clear();
    stage.settle();
    EXPECT_FALSE(isEnabled("register"));
}

TEST_F(RunnerFormTest, ButtonIsCalledByWhetherTheRunnerIsRegistered) {
    show({"one"});
    EXPECT_EQ(title(), "Register");
    stage.world.markRegistered("r0");
    stage.type("name", QStringLiteral("!"));
    EXPECT_EQ(title(), "Re-register");
    stage.world.files.files.erase(FakeWorld::dataFolder("r0") + "/.runner");
    EXPECT_EQ(title(), "Re-register") << "until something is drawn again";
    stage.type("name", QStringLiteral("!"));
    EXPECT_EQ(title(), "Register");
    stage.world.markRegistered("r0");
    stage.view->hide();
    stage.view->show();
    EXPECT_EQ(title(), "Re-register");
}

TEST_F(RunnerFormTest, WhileRegisteringTheButtonIsOffAndTheSpinnerTurns) {
    show({"one"});
    EXPECT_FALSE(isShown("spinner"));
    registerWith(QStringLiteral("t"));
    EXPECT_TRUE(stage.registration->busy());
    EXPECT_FALSE(isEnabled("register"));
    EXPECT_TRUE(isShown("spinner"));
    EXPECT_FALSE(isShown("message"));
    stage.finishRegistration();
    EXPECT_FALSE(isShown("spinner"));
    EXPECT_EQ(stage.world.queue.armed(), 0U);
}

TEST_F(RunnerFormTest, SuccessIsGreenEmptiesTheTokenAndStartsTheRunner) {
    show({"one"});
    stage.world.launcher.duringRun = [this] { stage.world.markRegistered("r0"); };
    registerWith(QStringLiteral("t"));
    stage.finishRegistration();
    EXPECT_EQ(message().text().toStdString(), "Registered ✓");
    EXPECT_EQ(messageColor(), textColor(SystemColor::green));
    EXPECT_EQ(text("token"), "");
    EXPECT_EQ(title(), "Re-register");
    EXPECT_EQ(stage.world.launcher.childCount(), 1U);
}

TEST_F(RunnerFormTest, FailureIsRedAndKeepsTheToken) {
    show({"one"});
    stage.world.toolFails("INFO registering\nError: token not found\n\n");
    registerWith(QStringLiteral("t"));
    stage.finishRegistration();
    EXPECT_EQ(message().text().toStdString(), "Error: token not found");
    EXPECT_EQ(messageColor(), textColor(SystemColor::red));
    EXPECT_EQ(text("token"), "t");
    EXPECT_TRUE(isEnabled("register"));
}

TEST_F(RunnerFormTest, TokenAndOutcomeStayWithWhateverRunnerIsShown) {
    show({"one", "two"});
    stage.world.toolFails("Error: no\n");
    registerWith(QStringLiteral("t"));
    stage.clickRow(1);
    EXPECT_TRUE(isShown("spinner"));
    EXPECT_FALSE(isEnabled("register"));
    stage.finishRegistration();
    EXPECT_EQ(message().text().toStdString(), "Error: no");
    EXPECT_EQ(text("token"), "t");
    stage.view->hide();
    stage.view->show();
    stage.clickRow(0);
    EXPECT_EQ(message().text().toStdString(), "Error: no");
    EXPECT_TRUE(isShown("message"));
    EXPECT_EQ(text("token"), "t");
    stage.type("name", QStringLiteral("!"));
    EXPECT_TRUE(isShown("message")) << "edits do not clear it";
}

TEST_F(RunnerFormTest, ActsOnTheRunnerThatWasShownAtTheClick) {
    show({"one", "two"});
    stage.world.launcher.duringRun = [this] {
        stage.world.markRegistered("r0");
        stage.world.markRegistered("r1");
    };
    registerWith(QStringLiteral("t"));
    stage.clickRow(1);
    stage.finishRegistration();
    EXPECT_EQ(stage.world.launcher.runs[0].workingFolder, FakeWorld::dataFolder("r0"));
    EXPECT_TRUE(stage.runner(0).keepRunning());
    EXPECT_FALSE(stage.runner(1).keepRunning());
}

TEST_F(RunnerFormTest, RunnerThatIsRemovedWhileItRegistersDoesNoHarm) {
    show({"one", "two"});
    registerWith(QStringLiteral("t"));
    click("removeRunner");
    EXPECT_EQ(text("name"), "two");
    stage.finishRegistration();
    EXPECT_EQ(message().text().toStdString(), "Registered ✓");
    EXPECT_EQ(stage.world.launcher.childCount(), 0U);
}

TEST_F(RunnerFormTest, ASecondClickThatIsOnItsWayRegistersNothing) {
    show({"one"});
    stage.type("token", QStringLiteral("t"));
    stage.button("register").click();
    EXPECT_FALSE(isEnabled("register"));
    stage.button("register").click();
    EXPECT_EQ(stage.world.background.count(), 1U);
}

TEST_F(RunnerFormTest, ReturnPressesTheButton) {
    show({"one"});
    stage.type("token", QStringLiteral("t"));
    stage.button("register").setFocus();
    QTest::keyClick(&stage.button("register"), Qt::Key_Return);
    EXPECT_TRUE(stage.registration->busy());
}

TEST_F(RunnerFormTest, KeyboardThatPressedTheButtonGoesToTheToken) {
    show({"one"});
    stage.type("token", QStringLiteral("t"));
    stage.button("register").setFocus();
    QTest::keyClick(&stage.button("register"), Qt::Key_Space);
    stage.settle();
    EXPECT_TRUE(stage.registration->busy());
    EXPECT_TRUE(stage.field("token").hasFocus());
    EXPECT_TRUE(stage.field("token").hasSelectedText()) << "what is typed now replaces it";
}

}  // namespace
}  // namespace valdorn
