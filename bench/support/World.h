#pragma once

#include <string>

#include "platform/Services.h"
#include "platform/XdgFolders.h"
#include "platform/posix/InstalledResources.h"
#include "platform/posix/PosixFileSystem.h"
#include "platform/posix/PosixHostInfo.h"
#include "platform/posix/ThreadBackgroundQueue.h"
#include "platform/qt/IniUserDefaults.h"

namespace valdorn {

// The outside world of the fleet, all real: what it knows from the home folder that HOME names.
struct World {
    PosixFileSystem files;
    PosixHostInfo host;
    ThreadBackgroundQueue background;
    IniUserDefaults defaults{files, XdgFolders::configuration(host) + "/valdorn/valdorn.ini"};
    InstalledResources resources{host.homeFolder() + "/valdorn"};  // as if installed there: none

    Services with(MainQueue& queue, ChildLauncher& launcher) {
        return {queue, background, launcher, files, defaults, resources, host};
    }
};

}  // namespace valdorn
