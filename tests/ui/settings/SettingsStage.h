#pragma once

#include <QString>
#include <memory>
#include <string>
#include <vector>

#include "fleet/RunnerSelection.h"
#include "runner/RegistrationForm.h"
#include "support/FakeWorld.h"
#include "support/MemoryLoginItemRegistry.h"
#include "support/RecordingSystemLog.h"

class QAbstractButton;
class QLineEdit;
class QListWidget;
class QWidget;

namespace valdorn {

class ValdornSettingsView;

// A fleet under a test's hand, and the settings window's view on it.
class SettingsStage {
public:
    SettingsStage();
    ~SettingsStage();

    // Makes the fleet, with each runner's name ("r0", "r1", ... are their ids); none is registered.
    void makeFleet(const std::vector<std::string>& names);

    // The view on the fleet, shown.
    void show();

    // What was posted happens, and is shown.
    void settle();
    // Types the token and registers the first runner, to the end.
    void registerFirst(const char* token);
    // The registration tool runs, and what that leads to happens.
    void finishRegistration();

    RunnerManager& runner(std::size_t index) { return *store->runners().at(index); }
    void edit(std::size_t index, std::string RunnerConfig::*field, const std::string& text);

    // What is shown, by its object name.
    template <typename Widget>
    Widget& find(const char* name) const {
        return static_cast<Widget&>(findWidget(name));
    }
    QListWidget& list() const;
    QLineEdit& field(const char* name) const;
    QAbstractButton& button(const char* name) const;

    // The names in the list.
    std::vector<std::string> names() const;
    // The highlighted row, or -1.
    int highlighted() const;
    void clickRow(int row);
    // Types at the end of the field, which gets the keyboard.
    void type(const char* field, const QString& text);

    FakeWorld world;
    MemoryLoginItemRegistry loginItems;
    RecordingSystemLog log;
    std::shared_ptr<RunnersStore> store;
    std::shared_ptr<RunnerSelection> selection;
    std::shared_ptr<RegistrationForm> registration;
    std::unique_ptr<ValdornSettingsView> view;

private:
    QWidget& findWidget(const char* name) const;
};

}  // namespace valdorn
