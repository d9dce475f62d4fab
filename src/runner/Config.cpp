#include "runner/Config.h"

#include <algorithm>

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "platform/BundleResources.h"
#include "platform/HostInfo.h"
#include "platform/Path.h"
#include "platform/UserDefaults.h"
#include "runner/RunnerConfig.h"
#include "text/Ascii.h"

namespace valdorn::Config {

namespace {

std::string lowerCasedByUnicode(const std::string& text) {
    std::string lowered;
    icu::UnicodeString::fromUTF8(text).toLower(icu::Locale::getRoot()).toUTF8String(lowered);
    return lowered;
}

// Each start comes by here. Names are nearly always ASCII, and without ICU, which nothing else asks
// at the start, 0.8 MiB less are resident.
std::string lowerCased(const std::string& text) {
    return asciiPrefix(text) < text.size() ? lowerCasedByUnicode(text) : asciiLowerCased(text);
}

std::string defaultRunnerName(const HostInfo& host) {
    std::string name = host.computerName().value_or("mac");
    std::replace(name.begin(), name.end(), ' ', '-');
    return lowerCased(name);
}

}  // namespace

void registerDefaults(const HostInfo& host, UserDefaults& defaults) {
    defaults.registerFallbacks({{instanceURLKey, ""},
                                {runnerNameKey, defaultRunnerName(host)},
                                {labelsKey, defaultLabels},
                                {extraPathKey, ""}});
}

std::string actRunnerPath(const BundleResources& resources, const HostInfo& host) {
    if (auto bundled = resources.path("act_runner"))
        return *bundled;
    return appendPathComponent(host.homeFolder(), "actrunner/act_runner");
}

std::string pathEnv(std::string_view extra, std::string_view home) {
    std::string path;
    while (!extra.empty()) {
        const std::string_view folder = extra.substr(0, extra.find(':'));
        if (!folder.empty())
            path.append(folder).append(":");
        extra.remove_prefix(std::min(extra.size(), folder.size() + 1));
    }
    return path.append(home).append(
        "/.cargo/bin:/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin");
}

std::string applicationSupportFolder(std::string_view home) {
    return appendPathComponent(home, "Library/Application Support/Valdorn");
}

}  // namespace valdorn::Config
