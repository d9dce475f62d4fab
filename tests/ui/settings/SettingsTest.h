#pragma once

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/settings/SettingsStage.h"
#include "ui/settings/ValdornSettingsView.h"

namespace valdorn {

// The settings window on a fleet under the test's hand.
class SettingsTest : public testing::Test {
protected:
    void show(const std::vector<std::string>& names) {
        stage.makeFleet(names);
        stage.show();
    }
    std::string text(const char* field) { return stage.field(field).text().toStdString(); }
    bool isShown(const char* name) { return stage.find<QWidget>(name).isVisible(); }
    bool isEnabled(const char* name) { return stage.find<QWidget>(name).isEnabled(); }
    void click(const char* button) {
        QTest::mouseClick(&stage.button(button), Qt::LeftButton);
        stage.settle();
    }
    QRect placeOf(const QWidget& widget) {
        return {widget.mapTo(stage.view.get(), QPoint()), widget.size()};
    }

    const Looks looks{Scheme::light, 9};
    SettingsStage stage;
};

}  // namespace valdorn
