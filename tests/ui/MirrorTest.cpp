#include <QCoreApplication>
#include <QString>
#include <QWidget>
#include <functional>
#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/log/LogStage.h"
#include "ui/log/LogViewerView.h"
#include "ui/onboarding/OnboardingStage.h"
#include "ui/settings/SettingsStage.h"
#include "ui/settings/ValdornSettingsView.h"
#include "ui/status/StatusStage.h"

namespace valdorn {
namespace {

// Our own controls, and where they are in their window.
using Places = std::map<QString, QRect>;

std::vector<QWidget*> controlsIn(QWidget& window) {
    std::vector<QWidget*> controls;
    for (QWidget* const widget : window.findChildren<QWidget*>()) {
        const QString name = widget->objectName();
        if (widget->isVisible() && !name.isEmpty() && !name.startsWith(QStringLiteral("qt_")))
            controls.push_back(widget);
    }
    return controls;
}

Places placesIn(QWidget& window) {
    Places places;
    std::map<QString, int> counts;
    for (QWidget* const widget : controlsIn(window)) {
        const QString name = widget->objectName();
        places[name + QString::number(++counts[name])] = {widget->mapTo(&window, QPoint()),
                                                          widget->size()};
    }
    return places;
}

// What the tab key passes, from the first control on.
std::vector<QString> tabOrderIn(QWidget& window) {
    std::vector<QString> names;
    QWidget* widget = &window;
    do {
        widget = widget->nextInFocusChain();
        if (widget->isVisible() && widget->focusPolicy() & Qt::TabFocus)
            names.push_back(widget->objectName());
    } while (widget != &window);
    return names;
}

// A window in one layout and in the other one is the same thing in a mirror, and the keyboard goes
// the same way through it.
void expectMirrored(QWidget& window, const std::function<void()>& settle) {
    const Places before = placesIn(window);
    const std::vector<QString> tabOrder = tabOrderIn(window);
    ASSERT_GE(before.size(), 5U);
    const RightToLeft mirrored;
    settle();
    const Places after = placesIn(window);
    ASSERT_EQ(after.size(), before.size());
    for (const auto& [name, place] : before) {
        EXPECT_EQ(after.at(name).size(), place.size()) << name.toStdString();
        EXPECT_NEAR(after.at(name).left(), window.width() - 1 - place.right(), 1)
            << name.toStdString();
        EXPECT_EQ(after.at(name).top(), place.top()) << name.toStdString();
    }
    EXPECT_EQ(tabOrderIn(window), tabOrder);
}

class MirrorTest : public testing::Test {
protected:
    const Looks looks{Scheme::light, 9};
};

TEST_F(MirrorTest, Settings) {
    SettingsStage stage;
    stage.makeFleet({"mac-mini", "build-server"});
    stage.show();
    stage.world.toolFails("Error: refused\n");
    stage.registerFirst("wrong");
    expectMirrored(*stage.view, [&stage] { stage.settle(); });
}

TEST_F(MirrorTest, RunnerStatus) {
    StatusStage stage;
    stage.makeThreeRunners();
    stage.show();
    stage.releaseIs("v1.0.8");
    expectMirrored(*stage.window, [&stage] { stage.settle(); });
}

TEST_F(MirrorTest, Log) {
    LogStage stage;
    stage.show();
    expectMirrored(*stage.window, [] { QCoreApplication::sendPostedEvents(); });
}

TEST_F(MirrorTest, Onboarding) {
    OnboardingStage stage;
    stage.show();
    expectMirrored(*stage.window, [&stage] { stage.settle(); });
}

}  // namespace
}  // namespace valdorn
