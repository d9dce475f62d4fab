#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>
#include <utility>

#include <gtest/gtest.h>

#include "support/RecordingPasteboard.h"
#include "support/VirtualMainQueue.h"
#include "ui/CheckBox.h"
#include "ui/Divider.h"
#include "ui/GroupPanel.h"
#include "ui/Pictures.h"
#include "ui/PromptField.h"
#include "ui/StrongFrame.h"
#include "ui/SystemPalette.h"
#include "ui/log/LogRowsView.h"

namespace valdorn {
namespace {

// One of each kind of control, framed.
class StrongFrameTest : public testing::Test {
protected:
    StrongFrameTest() {
        new StrongFrame(*button);
        new StrongFrame(*picker);
        for (QWidget* const widget : controls())
            layout->addWidget(widget);
        panel->setMinimumHeight(20);
        window.resize(300, 400);
        window.show();
    }
    std::vector<QWidget*> controls() const { return {button, picker, field, rows, panel}; }

    // How much the most visible pixel at the control's left edge stands out from the window.
    double frameContrast(const QWidget& control) {
        const QImage seen = Pictures::render(window);
        const QColor ground = window.palette().color(QPalette::Window);
        const int y = control.geometry().center().y();
        double most = 0;
        for (int x = control.x(); x < control.x() + 3; ++x)
            most = std::max(most, SystemPalette::contrast(seen.pixelColor(x, y), ground));
        return most;
    }

    Looks looks{Scheme::light};
    VirtualMainQueue queue;
    RecordingPasteboard pasteboard;
    QWidget window;
    QVBoxLayout* const layout = new QVBoxLayout(&window);
    QPushButton* const button = new QPushButton(QStringLiteral("Copy"));
    QComboBox* const picker = new QComboBox;
    PromptField* const field = new PromptField(QStringLiteral("Filter"));
    LogRowsView* const rows = new LogRowsView(queue, pasteboard);
    GroupPanel* const panel = new GroupPanel;
};

TEST_F(StrongFrameTest, FramesCanBeSeenWhereContrastIsHigh) {
    for (const Scheme scheme : {Scheme::blackOnWhite, Scheme::whiteOnBlack}) {
        looks.change(scheme);
        for (const QWidget* const control : controls())
            EXPECT_GE(frameContrast(*control), 4.5) << control->metaObject()->className();
    }
}

TEST_F(StrongFrameTest, ElsewhereFramesAreTheStylesOwn) {
    looks.change(Scheme::whiteOnBlack);
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        looks.change(scheme);
        EXPECT_FALSE(button->testAttribute(Qt::WA_SetPalette));
        for (const QWidget* const control : controls())
            EXPECT_LT(frameContrast(*control), 3.0) << control->metaObject()->className();
    }
}

// Some desktops have black for it, on black.
TEST_F(StrongFrameTest, DisabledTextsCanBeReadWhereContrastIsHigh) {
    looks.change(Scheme::whiteOnBlack);
    QPalette careless = QApplication::palette();
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        careless.setColor(QPalette::Disabled, role, Qt::black);
    QApplication::setPalette(careless);
    QCoreApplication::sendPostedEvents();
    const CheckBox box(QStringLiteral("Follow"));
    QLineEdit edit;
    new StrongFrame(edit);
    const std::initializer_list<std::pair<const QWidget*, QPalette::ColorRole>> texts{
        {button, QPalette::ButtonText},
        {picker, QPalette::ButtonText},
        {&box, QPalette::WindowText},
        {&edit, QPalette::Text}};
    for (const auto& [control, role] : texts)
        EXPECT_GE(
            SystemPalette::contrast(control->palette().color(QPalette::Disabled, role), Qt::black),
            4.5)
            << control->metaObject()->className();
}

// Only the window's colour differs, which a framed control has one of its own of: no change of its
// palette tells it.
TEST_F(StrongFrameTest, FollowsAControlThatMovesToAnotherPart) {
    const QPalette strong =
        QPalette(Qt::black, Qt::white, Qt::white, Qt::darkGray, Qt::gray, Qt::black, Qt::white);
    QWidget part(&window);
    part.setPalette(strong);
    QPalette usual = strong;
    usual.setColor(QPalette::Window, Qt::lightGray);
    QWidget other(&window);
    other.setPalette(usual);
    button->setParent(&part);
    EXPECT_NE(button->palette().color(QPalette::Window), QColor(Qt::white));
    button->setParent(&other);
    EXPECT_EQ(button->palette().color(QPalette::Window), QColor(Qt::lightGray));
}

TEST_F(StrongFrameTest, TextsKeepTheirColours) {
    looks.change(Scheme::whiteOnBlack);
    EXPECT_EQ(button->palette().color(QPalette::ButtonText), QColor(Qt::white));
    EXPECT_EQ(field->palette().color(QPalette::Text), QColor(Qt::white));
    EXPECT_EQ(field->palette().color(QPalette::Base), QColor(Qt::black));
}

}  // namespace
}  // namespace valdorn
