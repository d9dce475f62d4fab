// The composition root: answers the command line, or makes everything, wires it and runs the loop.

#include <QApplication>
#include <QDBusConnection>
#include <QIcon>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/LaunchGate.h"
#include "app/TrayHostSearch.h"
#include "fleet/LogPath.h"
#include "fleet/RunnerSelection.h"
#include "fleet/RunnersStore.h"
#include "logs/LogTailer.h"
#include "logs/LogViewer.h"
#include "platform/ApplicationId.h"
#include "platform/Environment.h"
#include "platform/Path.h"
#include "platform/Services.h"
#include "platform/XdgFolders.h"
#include "platform/posix/AutostartRegistry.h"
#include "platform/posix/DaemonLedger.h"
#include "platform/posix/ExecutablePath.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/InstanceLock.h"
#include "platform/posix/InstancePlace.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/posix/PosixSystemLog.h"
#include "platform/posix/RecordingChildLauncher.h"
#include "platform/posix/StandardStreams.h"
#include "platform/posix/StarterMarks.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/InstanceBus.h"
#include "platform/qt/NetworkHttpClient.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtWindowHost.h"
#include "platform/qt/QtWorkspace.h"
#include "platform/qt/QuitSignals.h"
#include "platform/qt/SessionBus.h"
#include "platform/qt/StartupNotification.h"
#include "platform/qt/SystemTraySurface.h"
#include "platform/qt/TrayHostWatcher.h"
#include "platform/qt/TrayStatusItem.h"
#include "platform/qt/XembedTrayWatcher.h"
#include "runner/RegistrationForm.h"
#include "text/CaseFold.h"
#include "ui/TrayDrawing.h"
#include "ui/log/LogViewerView.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/settings/ValdornSettingsView.h"
#include "ui/status/RunnerStatusView.h"
#include "update/ReleaseService.h"
#include "update/UpdateChecker.h"

namespace valdorn {
namespace {

// How long a start waits for the daemons that a killed instance has left. An idle daemon ends at
// once; one that finishes a job may go on.
constexpr std::chrono::seconds leftoverPatience{3};

// How long a second start waits for the first one to come onto the bus: it may have just begun.
constexpr std::chrono::seconds activationPatience{5};

// What the program needs before there is a display.
struct Ground {
    // Both before the environment is read for the children.
    bool isStartedByBus = StarterMarks::takeSessionBus();
    std::string activationToken = StarterMarks::takeActivationToken();
    PosixFileSystem files;
    PosixHostInfo host;
    std::string executable = executablePath();
    AutostartRegistry loginItems{files, host, executable};
    PosixSystemLog log;
};

// Where the instance keeps its lock and ledger; on failure the reason is on standard error.
std::optional<InstancePlace> findPlace(const HostInfo& host) {
    auto place = InstancePlace::forHome(host.environment(), host.homeFolder());
    if (place)
        return std::move(place.value());
    std::fprintf(stderr, "valdorn: %s\n", place.error().c_str());
    return std::nullopt;
}

// The running program: all that lives as long as the event loop, in the order of its making.
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
    bool isNotifierHostUsable() const;
    InstanceBus::Requests busRequests();
    InstanceBus::OnActivate opener(void (AppDelegate::*open)());
    void openFor(const std::string& activationToken, void (AppDelegate::*open)());
    void quitFor(const std::string& activationToken);
    RunnersStore& store() { return RunnersStore::shared(services_); }
    QWidget* makeSettingsView();
    QWidget* makeLogView();
    QWidget* makeStatusView();
    QWidget* makeOnboardingView();

    Ground& ground_;
    const std::string key_;
    QtMainQueue mainQueue_;
    std::optional<DaemonLedger> ledger_;
    std::optional<PosixChildLauncher> children_{std::in_place};
    std::optional<RecordingChildLauncher> recorder_;
    ThreadBackgroundQueue backgroundQueue_;
    IniUserDefaults defaults_{
        appendPathComponent(XdgFolders::configuration(ground_.host), "valdorn/valdorn.ini")};
    InstalledResources resources_{ground_.executable};
    const Services services_;

    std::shared_ptr<AppDelegate> delegate_;  // owns the menu that the next two show
    QtPasteboard pasteboard_;
    QtWorkspace workspace_{ground_.host};
    std::optional<NetworkHttpClient> http_;  // once a window asks for something
    QtWindowHost windows_;
    TrayStatusItem statusItem_;
    SessionBus sessionBus_;
    std::optional<TrayHostWatcher> notifierHosts_;  // while the bus is there
    XembedTrayWatcher xembedTrays_;
    TrayHostSearch hostSearch_;
    LaunchGate launchGate_;
    std::optional<InstanceBus> instanceBus_;  // while the bus is there
    QuitSignals quitSignals_;
};

std::unique_ptr<TraySurface> makeSurface(TrayHost host, TraySurface::Content content) {
    return std::make_unique<SystemTraySurface>(host, std::move(content));
}

Application::Application(Ground& ground, const std::string& key,
                         const std::optional<std::string>& ledger)
    : ground_(ground),
      key_(key),
      ledger_(ledger ? std::make_optional<DaemonLedger>(ground.files, *ledger) : std::nullopt),
      services_{mainQueue_, backgroundQueue_, launcher(),  ground_.files,
                defaults_,  resources_,       ground_.host},
      delegate_(AppDelegate::create({services_, statusItem_, windows_,
                                     [this]() -> RunnersStore& { return store(); },
                                     [this] { terminate(); }})),
      statusItem_(
          mainQueue_,
          {TrayDrawing::spinnerFrames, TrayDrawing::icon, TrayDrawing::spinner, TrayDrawing::empty},
          makeSurface),
      sessionBus_(mainQueue_, backgroundQueue_, SessionBus::connectToSession,
                  {[this](const QDBusConnection& bus) { onBusUp(bus); }, [this] { onBusDown(); }}),
      xembedTrays_([this] { hostSearch_.hostsChanged(); }),
      hostSearch_(mainQueue_,
                  {[this] { return isNotifierHostUsable(); },
                   [this] { return xembedTrays_.isTrayPresent(); }},
                  {[this](TrayHost host) { statusItem_.show(host); }, [this] { onHostMissing(); },
                   [this] { windows_.withdrawMenu(); }}),
      launchGate_(mainQueue_, [this] { launch(); }),
      quitSignals_([this] { delegate_->quit(); }, [this] { children_.reset(); }) {
    windows_.registerView(WindowKind::settings, [this] { return makeSettingsView(); });
    windows_.registerView(WindowKind::log, [this] { return makeLogView(); });
    windows_.registerView(WindowKind::status, [this] { return makeStatusView(); });
    windows_.registerView(WindowKind::onboarding, [this] { return makeOnboardingView(); });
}

QWidget* Application::makeSettingsView() {
    return new ValdornSettingsView({mainQueue_, ground_.loginItems, ground_.log},
                                   std::make_shared<RunnerSelection>(store().shared_from_this()),
                                   RegistrationForm::create(mainQueue_, backgroundQueue_));
}

QWidget* Application::makeLogView() {
    const auto logPath = [this] { return Config::logPath(store()); };
    const CaseFold fold(Environment::characterLocale(ground_.host.environment()));
    return new LogViewerView(
        {mainQueue_, pasteboard_, workspace_, logPath},
        std::make_unique<LogViewer>(mainQueue_,
                                    LogTailer::create(mainQueue_, ground_.files, logPath()), fold));
}

QWidget* Application::makeStatusView() {
    if (!http_)
        http_.emplace(mainQueue_);
    return new RunnerStatusView(
        store().shared_from_this(), mainQueue_,
        std::make_unique<UpdateChecker>(*http_, ReleaseService::baseUrl(ground_.host)));
}

QWidget* Application::makeOnboardingView() {
    return new OnboardingView({store().first(), store().shared_from_this(), mainQueue_, workspace_,
                               [this] { delegate_->openSettings(); },
                               [this] { windows_.close(WindowKind::onboarding); }});
}

ChildLauncher& Application::launcher() {
    if (!ledger_)
        return *children_;
    return recorder_ ? *recorder_ : recorder_.emplace(*children_, *ledger_);
}

void Application::launch() {
    windows_.useActivationToken(ground_.activationToken);
    delegate_->applicationDidFinishLaunching();
    hostSearch_.start();
    StartupNotification::complete(ground_.activationToken);
}

void Application::terminate() {
    launchGate_.close();
    quitSignals_.disarm();
    // A relaunch that falls due now comes too late. Whoever waits for a registration tool lets go
    // of it, so that the threads can be joined.
    launcher().shutDown();
    if (ledger_)
        ledger_->clear();
    QCoreApplication::quit();
}

void Application::onHostMissing() {
    windows_.offerMenu(*delegate_->menu());
    delegate_->openStatus();
}

void Application::onBusUp(const QDBusConnection& bus) {
    notifierHosts_.emplace(bus, [this] { hostSearch_.hostsChanged(); });
    instanceBus_.emplace(bus, key_, busRequests());
}

void Application::onBusDown() {
    instanceBus_.reset();
    notifierHosts_.reset();
    statusItem_.loseBus();
    hostSearch_.hostsChanged();
}

// Before it makes the first item for a notifier host, Qt looks for one itself, once, over a
// connection of its own that does not come back with the bus.
bool Application::isNotifierHostUsable() const {
    return notifierHosts_ && notifierHosts_->isHostPresent() &&
           (statusItem_.host() == TrayHost::notifier ||
            QDBusConnection::sessionBus().isConnected());
}

void Application::openFor(const std::string& activationToken, void (AppDelegate::*open)()) {
    windows_.useActivationToken(activationToken);
    ((*delegate_).*open)();
    StartupNotification::complete(activationToken);
}

// A window that whoever asks for it may raise, once there is a fleet to show.
InstanceBus::OnActivate Application::opener(void (AppDelegate::*open)()) {
    return [this, open](const std::string& token) {
        launchGate_.request([this, open, token] { openFor(token, open); });
    };
}

void Application::quitFor(const std::string& activationToken) {
    delegate_->quit();
    StartupNotification::complete(activationToken);
}

// The names of the actions are those of the desktop entry.
InstanceBus::Requests Application::busRequests() {
    InstanceBus::Requests requests;
    requests.activate = opener(&AppDelegate::openStatus);
    requests.actions["runner-status"] = opener(&AppDelegate::openStatus);
    requests.actions["settings"] = opener(&AppDelegate::openSettings);
    requests.actions["log"] = opener(&AppDelegate::openLog);
    requests.actions["quit"] = [this](const std::string& token) { quitFor(token); };
    return requests;
}

int Application::run() {
    // An action starts the program where it does not run. It is not to start a fleet only to end
    // it when the action is to quit.
    if (ground_.isStartedByBus)
        launchGate_.awaitRequest();
    sessionBus_.start();
    // Off the main thread, which goes on listening for signals: what a killed instance has left may
    // take its time.
    backgroundQueue_.run([this] {
        if (ledger_)
            ledger_->endLeftovers(leftoverPatience);
        mainQueue_.post([this] { launchGate_.ready(); });
    });
    const int status = QApplication::exec();
    if (sessionBus_.isLooking()) {
        // The bus may never answer, and all that is still to be destroyed would wait for it.
        children_.reset();
        std::_Exit(status);
    }
    return status;
}

// Qt ends the process with a core dump where it gets no display; to us that is an ordinary failure.
// Qt's own last words, to install the program anew, would lead nowhere.
void onMessageBeforeDisplay(QtMsgType type, const QMessageLogContext& context,
                            const QString& text) {
    if (type != QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
        return;
    }
    std::fputs("valdorn: There is no display to show anything on\n", stderr);
    std::_Exit(EXIT_FAILURE);
}

// How many of the arguments Qt gets to see: the program's name. The others mean nothing to us, and
// are not to mean something to Qt.
int argumentsForQt = 1;

// `ledger`: see Application.
int runApplication(Ground& ground, const std::optional<std::string>& ledger, char** argv) {
    const QtMessageHandler usual = qInstallMessageHandler(onMessageBeforeDisplay);
    QApplication application(argumentsForQt, argv);
    qInstallMessageHandler(usual);
    QApplication::setApplicationName(QStringLiteral("Valdorn"));
    QApplication::setApplicationVersion(QStringLiteral(VALDORN_VERSION));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(applicationId));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/org.valdorn.valdorn.svg")));
    QApplication::setQuitOnLastWindowClosed(false);
    return Application(ground, instanceKeyOf(ground.host.homeFolder()), ledger).run();
}

using Lock = Result<InstanceLock, LockRefusal>;

bool isHeldByAnother(const Lock& lock) {
    return !lock && lock.error().kind == LockRefusal::Kind::held;
}

constexpr char unreachable[] =
    "valdorn: Valdorn runs already, and the session bus does not reach it\n";

// A connection of its own: Qt's default one, begun beside an application object that goes, would be
// deaf for whatever comes after it. A bus that takes it and does not answer holds Qt for ever, and
// with it the end of the process, unless that is cut short.
QDBusConnection connectSecondStart(const QString& name) {
    ThreadBackgroundQueue connecting;
    std::promise<QDBusConnection> promise;
    auto connection = promise.get_future();
    connecting.run([&] { promise.set_value(SessionBus::connectToSession(name)); });
    if (connection.wait_for(activationPatience) == std::future_status::ready)
        return connection.get();
    std::fputs(unreachable, stderr);
    std::_Exit(EXIT_FAILURE);
}

// A second start for the same home: true when it has brought up the first one's status window. The
// first one may be ending just now: then the lock changes hands.
bool activateRunningInstance(const InstancePlace& place, const std::string& activationToken,
                             Lock& lock, char** argv) {
    const QCoreApplication application(argumentsForQt, argv);
    const auto tryToSucceed = [&place, &lock] {
        lock = InstanceLock::acquire(place.lockPath());
        return !isHeldByAnother(lock);
    };
    const QString connection = QStringLiteral("valdorn-second-start");
    const bool isReached =
        InstanceBus::activateRunningInstance(connectSecondStart(connection), place.key,
                                             activationToken, activationPatience, tryToSucceed);
    QDBusConnection::disconnectFromBus(connection);
    if (isHeldByAnother(lock))
        StartupNotification::complete(activationToken);
    return isReached;
}

int run(int argc, char** argv) {
    Ground ground;
    if (const auto word = CommandLine::answer({argv, argv + argc}, ground.loginItems, ground.log)) {
        std::puts(word->c_str());
        return EXIT_SUCCESS;
    }
    const auto place = findPlace(ground.host);
    if (!place)
        return runApplication(ground, std::nullopt, argv);
    Lock lock = InstanceLock::acquire(place->lockPath());
    if (isHeldByAnother(lock) &&
        activateRunningInstance(*place, ground.activationToken, lock, argv))
        return EXIT_SUCCESS;
    if (isHeldByAnother(lock)) {
        std::fputs(unreachable, stderr);
        return EXIT_FAILURE;
    }
    ground.loginItems.refreshMovedExecutable();
    if (lock)
        return runApplication(ground, place->ledgerPath(), argv);
    // Better two fleets than none.
    std::fprintf(stderr, "valdorn: %s\n", lock.error().description.c_str());
    return runApplication(ground, std::nullopt, argv);
}

}  // namespace
}  // namespace valdorn

int main(int argc, char** argv) {
    valdorn::openMissingStandardStreams();
    return valdorn::run(argc, argv);
}
