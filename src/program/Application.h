#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/AppDelegate.h"
#include "app/LaunchGate.h"
#include "app/TrayHostSearch.h"
#include "fleet/RunnersStore.h"
#include "platform/Path.h"
#include "platform/Services.h"
#include "platform/XdgFolders.h"
#include "platform/posix/DaemonLedger.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/RecordingChildLauncher.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/InstanceBus.h"
#include "platform/qt/NetworkHttpClient.h"
#include "platform/qt/NotifierName.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWindowHost.h"
#include "platform/qt/QtWorkspace.h"
#include "platform/qt/QuitSignals.h"
#include "platform/qt/SessionBus.h"
#include "platform/qt/TrayHostWatcher.h"
#include "platform/qt/TrayStatusItem.h"
#include "platform/qt/XembedTrayWatcher.h"
#include "program/Ground.h"

class QDBusConnection;
class QWidget;

namespace valdorn {

// The running program: all that lives as long as the event loop, in the order of its making. Main
// thread only, one per process, beside a QApplication; `ground` outlives it.
class Application {
public:
    // `key` names the instance on the bus. The ledger belongs to whoever holds the instance lock;
    // without it nothing is remembered of the daemons.
    Application(Ground& ground, const std::string& key, const std::optional<std::string>& ledger);
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application() = default;

    // Runs until the program is asked to quit; the exit status.
    int run();

private:
    ChildLauncher& launcher();
    void launch();
    void terminate();
    void onHostMissing();
    void onBusUp(const QDBusConnection& bus);
    void onBusDown();
    std::unique_ptr<TraySurface> makeSurface(TrayHost host, TraySurface::Content content);
    InstanceBus::Requests busRequests();
    InstanceBus::OnActivate opener(void (AppDelegate::*open)());
    void openFor(const std::string& activationToken, void (AppDelegate::*open)());
    void quitFor(const std::string& activationToken);
    RunnersStore& store() { return RunnersStore::shared(services_); }
    void registerView(WindowKind kind, QWidget* (Application::*make)());
    QWidget* makeSettingsView();
    QWidget* makeLogView();
    QWidget* makeStatusView();
    QWidget* makeOnboardingView();

    Ground& ground_;
    const std::string key_;
    QtMainQueue mainQueue_;
    std::optional<DaemonLedger> ledger_;
    std::optional<PosixChildLauncher> children_;
    std::optional<RecordingChildLauncher> recorder_;
    ThreadBackgroundQueue backgroundQueue_;
    IniUserDefaults defaults_{
        ground_.files,
        appendPathComponent(XdgFolders::configuration(ground_.host), "valdorn/valdorn.ini")};
    InstalledResources resources_{ground_.executable};
    const Services services_;

    std::shared_ptr<AppDelegate> delegate_;  // owns the menu that windows_ and statusItem_ show
    QtPasteboard pasteboard_;
    QtWorkspace workspace_{ground_.host};
    std::optional<NetworkHttpClient> http_;  // once a window asks for something
    QtWindowHost windows_;
    TrayStatusItem statusItem_;
    SessionBus sessionBus_;
    std::optional<TrayHostWatcher> notifierHosts_;  // while the bus is there
    std::unique_ptr<NotifierName> itemName_;        // on that bus, until an item takes it
    XembedTrayWatcher xembedTrays_;
    TrayHostSearch hostSearch_;
    LaunchGate launchGate_;
    std::optional<InstanceBus> instanceBus_;  // while the bus is there
    QuitSignals quitSignals_;
};

}  // namespace valdorn
