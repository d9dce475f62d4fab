#include "ui/settings/SettingsStage.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <stdexcept>

#include <gtest/gtest.h>

#include "ui/settings/ValdornSettingsView.h"

namespace valdorn {

SettingsStage::SettingsStage() = default;
SettingsStage::~SettingsStage() = default;

void SettingsStage::makeFleet(const std::vector<std::string>& names) {
    std::vector<RunnerConfig> records;
    for (const std::string& name : names) {
        const std::string id = "r" + std::to_string(records.size());
        records.push_back({id, name, "https://git.example.org", "linux:host", "", false});
    }
    world.saveFleet(records);
    store = RunnersStore::create(world.services());
    selection = std::make_shared<RunnerSelection>(store);
    registration = RegistrationForm::create(world.queue, world.background);
}

void SettingsStage::show() {
    view = std::make_unique<ValdornSettingsView>(SettingsEnvironment{world.queue, loginItems, log},
                                                 selection, registration);
    view->resize(view->minimumSizeHint());
    view->show();
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    settle();
}

void SettingsStage::settle() {
    world.queue.runPosted();
    // Each layout tells the one around it, a turn later; they are not nested deeper than that.
    for (int turn = 0; turn < 4; ++turn)
        QCoreApplication::processEvents();
}

void SettingsStage::registerFirst(const char* token) {
    type("token", QLatin1String(token));
    registration->doRegister(store->first());
    finishRegistration();
}

void SettingsStage::finishRegistration() {
    world.background.runAll();
    settle();
}

void SettingsStage::edit(std::size_t index, std::string RunnerConfig::*field,
                         const std::string& text) {
    RunnerConfig config = runner(index).config();
    config.*field = text;
    runner(index).setConfig(config);
    settle();
}

QWidget& SettingsStage::findWidget(const char* name) const {
    auto* const found = view->findChild<QWidget*>(QLatin1String(name));
    if (!found)
        throw std::logic_error(std::string("no ") + name);
    return *found;
}

QListWidget& SettingsStage::list() const {
    return find<QListWidget>("runnerList");
}

QLineEdit& SettingsStage::field(const char* name) const {
    return find<QLineEdit>(name);
}

QAbstractButton& SettingsStage::button(const char* name) const {
    return find<QAbstractButton>(name);
}

std::vector<std::string> SettingsStage::names() const {
    std::vector<std::string> names;
    for (int row = 0; row < list().count(); ++row)
        names.push_back(list().item(row)->text().toStdString());
    return names;
}

int SettingsStage::highlighted() const {
    const auto rows = list().selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void SettingsStage::clickRow(int row) {
    QTest::mouseClick(list().viewport(), Qt::LeftButton, Qt::NoModifier,
                      list().visualItemRect(list().item(row)).center());
    settle();
}

void SettingsStage::type(const char* name, const QString& text) {
    field(name).setFocus();
    field(name).end(false);
    QTest::keyClicks(&field(name), text);
    settle();
}

}  // namespace valdorn
