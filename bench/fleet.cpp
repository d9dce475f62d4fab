// Makes the fleet of a home folder as a start of the program does, windows and status bar apart:
// fleet HOME.
//
// Prints how many runners there are, how many nanoseconds it took to read the list and make them, how
// many until the menu tells of all of them and nothing is left to do, and by how many bytes the
// resident memory has grown meanwhile.
#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "app/AppDelegate.h"
#include "fleet/RunnersStore.h"
#include "platform/Services.h"
#include "platform/StatusItem.h"
#include "platform/WindowHost.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/IniUserDefaults.h"
#include "platform/qt/QtMainQueue.h"
#include "support/Measuring.h"
#include "support/stamps.h"

namespace {

class NoStatusItem : public valdorn::StatusItem {
public:
    void setMenu(valdorn::MenuModel& /*menu*/) override {}
    void setIcon(const valdorn::StatusIcon& /*icon*/) override {}
    void clearIcon() override {}
    void startSpinner() override {}
    void stopSpinner() override {}
    bool isSpinning() const override { return false; }
    void setLength(int /*points*/) override {}
};

class NoWindows : public valdorn::WindowHost {
public:
    void show(const valdorn::WindowDescription& /*description*/) override {}
    void close(valdorn::WindowKind /*kind*/) override {}
};

// The outside world, all real but for what is looked at.
struct World {
    valdorn::QtMainQueue queue;
    valdorn::PosixChildLauncher launcher;
    valdorn::ThreadBackgroundQueue background;
    valdorn::PosixFileSystem files;
    valdorn::PosixHostInfo host;
    valdorn::IniUserDefaults defaults{host.homeFolder() + "/valdorn.ini"};
    valdorn::InstalledResources resources{""};
    valdorn::Services services{queue, background, launcher, files, defaults, resources, host};
    NoStatusItem item;
    NoWindows windows;
};

void settle() {
    for (int turn = 0; turn < 3; ++turn) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2 || setenv("HOME", arguments[1], 1) != 0)
        return 2;
    const QCoreApplication application(count, arguments);
    World world;
    settle();
    const long residentBefore = valdorn::residentBytes();
    const long long begin = nanoseconds();
    const auto store = valdorn::RunnersStore::create(world.services);
    const long long made = nanoseconds();
    const auto delegate = valdorn::AppDelegate::create(
        {world.services, world.item, world.windows,
         [&store]() -> valdorn::RunnersStore& { return *store; }, [] {}, [] {}});
    delegate->applicationDidFinishLaunching();
    settle();
    const long long settled = nanoseconds();
    std::printf("%zu %lld %lld %ld\n", store->runners().size(), made - begin, settled - begin,
                valdorn::residentBytes() - residentBefore);
    // Any runner that has not heard yet that it is not registered would make the figures a lie.
    return store->aggregateStatus() == valdorn::RunnerStatus::notRegistered ? 0 : 1;
}
