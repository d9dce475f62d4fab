// Answers the command line, or lets the one instance of a home run.

#include <QApplication>
#include <QPixmapCache>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "app/CommandLine.h"
#include "platform/ApplicationId.h"
#include "platform/posix/InstanceLock.h"
#include "platform/posix/InstancePlace.h"
#include "platform/posix/ProcessSignals.h"
#include "platform/posix/Shortage.h"
#include "platform/posix/StandardStreams.h"
#include "platform/qt/TemporaryVariable.h"
#include "program/Application.h"
#include "program/BusThread.h"
#include "program/Farewell.h"
#include "program/Ground.h"
#include "program/SecondStart.h"
#include "program/SessionConnection.h"

namespace valdorn {
namespace {

// Qt's style keeps pictures of buttons by the palette they were drawn with. A form that is made anew
// for another runner brings new palettes, so the old pictures would only be kept; and of each that
// falls out Qt (6.4) keeps the name for ever, also when the cache is cleared. What does not fit in
// is not remembered at all.
constexpr int pictureCacheKilobytes = 0;

// Where the instance keeps its lock and ledger; on failure the reason is on standard error.
std::optional<InstancePlace> findPlace(const HostInfo& host) {
    auto place = tryPastShortage(
        [&host] { return InstancePlace::forHome(host.environment(), host.homeFolder()); });
    if (place)
        return std::move(place.value());
    std::fprintf(stderr, "valdorn: %s\n", place.error().description.c_str());
    return std::nullopt;
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

// `ledger`: see Application. Of the arguments Qt gets to see the program's name only: the others
// mean nothing to us, and are not to mean something to Qt.
int runApplication(Ground& ground, const std::optional<std::string>& ledger, char* programName) {
    int argumentCount = 1;
    std::optional<SilentBusGuard> guard(ground);
    // Looking for a desktop's own menu bar would wait for the bus, and we draw ours.
    QApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
    const QtMessageHandler usual = qInstallMessageHandler(onMessageBeforeDisplay);
    // With pictures in shared memory Qt waits for an X server before each that it has read the last
    // one, and is woken three to five times instead of once for each second that a window counts.
    std::optional<TemporaryVariable> picturesBySocket(std::in_place, "QT_XCB_NO_MITSHM", "1");
    QApplication application(argumentCount, &programName);
    picturesBySocket.reset();
    QPixmapCache::setCacheLimit(pictureCacheKilobytes);
    qInstallMessageHandler(usual);
    guard.reset();
    QApplication::setApplicationName(QStringLiteral("Valdorn"));
    QApplication::setApplicationVersion(QStringLiteral(VALDORN_VERSION));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(applicationId));
    QApplication::setQuitOnLastWindowClosed(false);
    const int status = Application(ground, instanceKeyOf(ground.host.homeFolder()), ledger).run();
    boundFarewell(status);
    return status;
}

int run(int argc, char** argv) {
    Ground ground;
    if (const auto word = CommandLine::answer({argv, argv + argc}, ground.loginItems, ground.log)) {
        std::puts(word->c_str());
        return EXIT_SUCCESS;
    }
    makeBusThread();
    const auto place = findPlace(ground.host);
    if (!place)
        return runApplication(ground, std::nullopt, argv[0]);
    // A start that a moment's shortage kept from the lock would run a second fleet beside the first.
    SecondStart::Lock lock =
        tryPastShortage([&place] { return InstanceLock::acquire(place->lockPath()); });
    if (SecondStart::isHeldByAnother(lock) &&
        SecondStart::activateRunningInstance(ground, *place, lock, argv[0]))
        return EXIT_SUCCESS;
    if (SecondStart::isHeldByAnother(lock)) {
        std::fputs("valdorn: Valdorn runs already, and the session bus does not reach it\n",
                   stderr);
        return EXIT_FAILURE;
    }
    ground.loginItems.refreshMovedExecutable();
    if (lock)
        return runApplication(ground, place->ledgerPath(), argv[0]);
    // Better two fleets than none.
    std::fprintf(stderr, "valdorn: %s\n", lock.error().description.c_str());
    return runApplication(ground, std::nullopt, argv[0]);
}

}  // namespace
}  // namespace valdorn

int main(int argc, char** argv) {
    valdorn::openMissingStandardStreams();
    valdorn::takeUsualSignals();
    try {
        return valdorn::run(argc, argv);
    } catch (const std::system_error& shortage) {
        // Without a thread, or a descriptor to be woken by, there is nothing to run with. What is
        // thrown later ends the program, too, and the next start ends the daemons.
        std::fprintf(stderr, "valdorn: %s\n", shortage.what());
        return EXIT_FAILURE;
    }
}
