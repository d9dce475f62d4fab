#include "platform/posix/InstancePlace.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/ErrorText.h"
#include "platform/XdgFolders.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Shortage.h"

namespace valdorn {

namespace {

constexpr mode_t onlyForTheUser = 0700;
constexpr const char* ownFolder = "/valdorn";

// 0, or why the folder cannot be made private to us. Somebody else's folder is none for a lock
// that others must not be able to take.
int makePrivate(const std::string& folder) {
    const auto opened = openPath(folder, O_RDONLY | O_DIRECTORY);
    if (!opened)
        return opened.error();
    struct stat status {};
    if (fstat(opened.value().number(), &status) != 0)
        return errno;
    if (status.st_uid != geteuid())
        return EPERM;
    const bool isPrivate = (status.st_mode & 07777) == onlyForTheUser;
    return isPrivate || fchmod(opened.value().number(), onlyForTheUser) == 0 ? 0 : errno;
}

int makeFolder(const std::string& folder) {
    const bool isThere = mkdir(folder.c_str(), onlyForTheUser) == 0 || errno == EEXIST;
    return isThere ? 0 : errno;
}

// 0, or why not. The missing parents are made, as the rules for the state folder say.
int makeFolderWithParents(const std::string& folder) {
    for (auto slash = folder.find('/', 1); slash != std::string::npos;
         slash = folder.find('/', slash + 1)) {
        // What is in the way shows at the last one.
        makeFolder(folder.substr(0, slash));
    }
    return makeFolder(folder);
}

// 0, or why the folder is of no use.
int prepare(const std::string& folder, int made) {
    return made != 0 ? made : makePrivate(folder);
}

PlaceRefusal refusal(const std::string& folder, int errorNumber) {
    return {"No private folder can be had at " + folder + ": " + errorText(errorNumber),
            isShortage(errorNumber)};
}

std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

}  // namespace

Result<InstancePlace, PlaceRefusal> InstancePlace::forHome(
    const std::vector<std::string>& environment, const std::string& home) {
    const std::string key = instanceKeyOf(home);
    if (const auto runtime = XdgFolders::named(environment, "XDG_RUNTIME_DIR")) {
        // The session makes the runtime folder itself; where it has not, there is none.
        const std::string folder = *runtime + ownFolder;
        const int failed = prepare(folder, makeFolder(folder));
        if (failed == 0)
            return InstancePlace{folder, key};
        if (isShortage(failed))
            return refusal(folder, failed);
    }
    const auto state = XdgFolders::named(environment, "XDG_STATE_HOME");
    const std::string folder = state.value_or(home + "/.local/state") + ownFolder;
    if (const int failed = prepare(folder, makeFolderWithParents(folder)); failed != 0)
        return refusal(folder, failed);
    return InstancePlace{folder, key};
}

std::string instanceKeyOf(const std::string& home) {
    constexpr std::uint64_t offsetBasis = 14695981039346656037u;
    constexpr std::uint64_t prime = 1099511628211u;
    std::uint64_t hash = offsetBasis;
    for (const char byte : resolved(home)) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= prime;
    }
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return digits.data();
}

}  // namespace valdorn
