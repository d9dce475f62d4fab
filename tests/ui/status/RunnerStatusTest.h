#pragma once

#include <QLabel>
#include <QTest>
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/ElidedLabel.h"
#include "ui/Pictures.h"
#include "ui/SymbolButton.h"
#include "ui/TabularLabel.h"
#include "ui/status/RunnerRow.h"
#include "ui/status/StatusStage.h"

namespace valdorn {

// The status window on a fleet under the test's hand, and what stands in it.
class RunnerStatusTest : public testing::Test {
protected:
    void show(const std::vector<std::string>& names) {
        stage.makeFleet(names);
        stage.show();
    }

    // From top to bottom, as they are seen.
    std::vector<RunnerRow*> rows() {
        const auto found = stage.window->findChildren<RunnerRow*>(QStringLiteral("runnerRow"));
        std::vector<RunnerRow*> rows(found.begin(), found.end());
        std::sort(rows.begin(), rows.end(),
                  [](const auto* one, const auto* other) { return one->y() < other->y(); });
        return rows;
    }
    template <typename Widget = ElidedLabel>
    Widget* part(std::size_t row, const char* name) {
        return rows().at(row)->findChild<Widget*>(QLatin1String(name));
    }
    SymbolButton* button(std::size_t row) { return part<SymbolButton>(row, "startStop"); }

    // The text of a part, or "-" where it is not there.
    std::string text(std::size_t row, const char* name) {
        const auto* const label = part(row, name);
        return label->isVisible() ? label->text().toStdString() : "-";
    }
    std::string uptime(std::size_t row) {
        const auto* const label = part<TabularLabel>(row, "uptime");
        return label->isVisible() ? label->text().toStdString() : "-";
    }
    QString heading() {
        return stage.window->findChild<QLabel*>(QStringLiteral("heading"))->text();
    }
    QLabel* footnote() { return stage.window->findChild<QLabel*>(QStringLiteral("footnote")); }
    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (std::size_t row = 0; row < rows().size(); ++row)
            result.push_back(text(row, "name"));
        return result;
    }
    void click(std::size_t row) {
        QTest::mouseClick(button(row), Qt::LeftButton);
        stage.settle();
    }
    QRect placeOf(QWidget* widget, QWidget* ancestor) {
        return {widget->mapTo(ancestor, QPoint()), widget->size()};
    }
    // As after the window system has painted all.
    void paintAll() {
        stage.settle();
        QTest::qWait(0);
        stage.settle();
    }

    const Looks looks{Scheme::light};
    StatusStage stage;
};

}  // namespace valdorn
