// Makes the fleet of a home folder as a start of the program does, windows and status bar apart:
// fleet HOME.
//
// Prints how many runners there are, how many nanoseconds it took until the menu tells of all of
// them and nothing is left to do, and by how many bytes the resident memory has grown meanwhile.
#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "app/AppDelegate.h"
#include "fleet/RunnersStore.h"
#include "platform/StatusItem.h"
#include "platform/WindowHost.h"
#include "platform/posix/PosixChildLauncher.h"
#include "platform/qt/QtMainQueue.h"
#include "support/Measuring.h"
#include "support/Settling.h"
#include "support/World.h"
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

}  // namespace

int main(int count, char** arguments) {
    if (count != 2 || setenv("HOME", arguments[1], 1) != 0)
        return 2;
    const QCoreApplication application(count, arguments);
    valdorn::QtMainQueue queue;
    valdorn::PosixChildLauncher launcher;
    NoStatusItem item;
    NoWindows windows;
    valdorn::World world;
    const auto services = world.with(queue, launcher);
    valdorn::settle();
    const long residentBefore = valdorn::residentBytes();
    const long long begin = nanoseconds();
    const auto store = valdorn::RunnersStore::create(services);
    const auto delegate = valdorn::AppDelegate::create(
        {services, item, windows, [&store]() -> valdorn::RunnersStore& { return *store; }, [] {},
         [] {}});
    delegate->applicationDidFinishLaunching();
    valdorn::settle();
    const long long settled = nanoseconds();
    std::printf("%zu %lld %ld\n", store->runners().size(), settled - begin,
                valdorn::residentBytes() - residentBefore);
    // Any runner that has not heard yet that it is not registered would make the figures a lie.
    return store->aggregateStatus() == valdorn::RunnerStatus::notRegistered ? 0 : 1;
}
