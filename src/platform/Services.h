#pragma once

namespace valdorn {

class BackgroundQueue;
class BundleResources;
class ChildLauncher;
class FileSystem;
class HostInfo;
class MainQueue;
class UserDefaults;

// The outside world as the runners and the fleet need it, handed down by constructors. The
// composition root owns what it refers to and keeps it alive longer than anything that holds it.
struct Services {
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    ChildLauncher& childLauncher;
    FileSystem& fileSystem;
    UserDefaults& userDefaults;
    BundleResources& bundleResources;
    HostInfo& hostInfo;
};

}  // namespace valdorn
