#include "program/Application.h"

#include <QApplication>
#include <QDBusConnection>
#include <QIcon>
#include <QWidget>
#include <chrono>
#include <utility>

#include "fleet/LogPath.h"
#include "fleet/RunnerSelection.h"
#include "logs/LogTailer.h"
#include "logs/LogViewer.h"
#include "platform/Environment.h"
#include "platform/qt/NotifierItem.h"
#include "platform/qt/StartupNotification.h"
#include "platform/qt/SystemTraySurface.h"
#include "program/SessionConnection.h"
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

ChildSettings settingsOfChildren(const Ground& ground, const std::optional<DaemonLedger>& ledger) {
    ChildSettings settings{ground.coreDumpLimit.before(), std::nullopt};
    if (ledger)
        settings.birthNote = ledger->birthNote();
    return settings;
}

}  // namespace

Application::Application(Ground& ground, const std::string& key,
                         const std::optional<std::string>& ledger)
    : ground_(ground),
      key_(key),
      ledger_(ledger ? std::make_optional<DaemonLedger>(ground.files, *ledger) : std::nullopt),
      children_(std::in_place, settingsOfChildren(ground, ledger_)),
      services_{mainQueue_, backgroundQueue_, launcher(),  ground_.files,
                defaults_,  resources_,       ground_.host},
      delegate_(AppDelegate::create({services_, statusItem_, windows_,
                                     [this]() -> RunnersStore& { return store(); },
                                     [this] { terminate(); }, [this] { hostSearch_.start(); }})),
      statusItem_(
          mainQueue_,
          {TrayDrawing::spinnerFrames, TrayDrawing::icon, TrayDrawing::spinner, TrayDrawing::empty},
          [this](TrayHost host, TraySurface::Content content) {
              return makeSurface(host, std::move(content));
          }),
      sessionBus_(
          mainQueue_, backgroundQueue_,
          [&ground](const QString& name) { return SessionConnection::open(ground, name); },
          {[this](const QDBusConnection& bus) { onBusUp(bus); }, [this] { onBusDown(); }},
          ground.sessionBus.empty() ? SessionBus::WithoutBus::settle
                                    : SessionBus::WithoutBus::lookAgain),
      xembedTrays_([this] { hostSearch_.hostsChanged(); }),
      hostSearch_(mainQueue_,
                  {[this] { return notifierHosts_ && notifierHosts_->isHostPresent(); },
                   [this] { return xembedTrays_.isTrayPresent(); }},
                  {[this](TrayHost host) { statusItem_.show(host); }, [this] { onHostMissing(); },
                   [this] { windows_.withdrawMenu(); }}),
      launchGate_(mainQueue_, [this] { launch(); }),
      quitSignals_([this] { delegate_->quit(); }, [this] { children_.reset(); }) {
    registerView(WindowKind::settings, &Application::makeSettingsView);
    registerView(WindowKind::log, &Application::makeLogView);
    registerView(WindowKind::status, &Application::makeStatusView);
    registerView(WindowKind::onboarding, &Application::makeOnboardingView);
}

// The icon of the windows is read for the first of them: at the start, Qt's plugin for it and the
// shapes in it would take 0.1 MiB for a window that may never come.
void Application::registerView(WindowKind kind, QWidget* (Application::*make)()) {
    windows_.registerView(kind, [this, make] {
        if (QApplication::windowIcon().isNull())
            QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/org.valdorn.valdorn.svg")));
        return (this->*make)();
    });
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
    StartupNotification::complete(ground_.activationToken);
}

void Application::terminate() {
    launchGate_.close();
    // Whoever asks from now on is to find nobody, and to start the program anew.
    if (instanceBus_)
        instanceBus_->leave();
    quitSignals_.disarm();
    // A relaunch that falls due now comes too late. Whoever waits for a registration tool lets go
    // of it, so that the threads can be joined.
    launcher().shutDown();
    if (ledger_)
        ledger_->clear();
    if (!quitSignals_.isPastEventLoop())
        QCoreApplication::quit();
}

void Application::onHostMissing() {
    windows_.offerMenu(*delegate_->menu());
    delegate_->openStatus();
}

void Application::onBusUp(const QDBusConnection& bus) {
    notifierHosts_.emplace(bus, [this] { hostSearch_.hostsChanged(); });
    // Known by the time at which hosts have answered: the item does not have to wait for it behind
    // the launch of the fleet.
    itemName_ = std::make_unique<NotifierName>(bus);
    instanceBus_.emplace(bus, key_, busRequests());
}

void Application::onBusDown() {
    instanceBus_.reset();
    notifierHosts_.reset();
    itemName_.reset();
    statusItem_.loseBus();
    hostSearch_.hostsChanged();
}

std::unique_ptr<TraySurface> Application::makeSurface(TrayHost host, TraySurface::Content content) {
    if (host == TrayHost::xembed)
        return std::make_unique<SystemTraySurface>(content);
    const QDBusConnection bus = SessionBus::connection();
    auto name = itemName_ ? std::move(itemName_) : std::make_unique<NotifierName>(bus);
    return std::make_unique<NotifierItem>(
        bus, std::move(name), std::move(content),
        [this](const std::string& token) { windows_.useActivationToken(token); });
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
    return QApplication::exec();
}

}  // namespace valdorn
