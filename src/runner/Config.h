#pragma once

#include <string>
#include <string_view>

namespace valdorn {

class BundleResources;
class HostInfo;
class UserDefaults;

// Where things are, and what the settings are when nobody set them. Stateless; any thread, except
// registerDefaults. `home` is the home folder as HostInfo gives it. Nothing here fails or looks at
// whether a path exists, except actRunnerPath for the bundled resource.
namespace Config {

// Keys of the user defaults.
inline constexpr char instanceURLKey[] = "instanceURL";
inline constexpr char runnerNameKey[] = "runnerName";
inline constexpr char labelsKey[] = "labels";
inline constexpr char extraPathKey[] = "extraPath";
inline constexpr char hasConnectedKey[] = "hasConnected";  // a truth value without a fallback

// Names in a runner's data folder.
inline constexpr char registrationMarkerName[] = ".runner";  // written by the tool; only looked for
inline constexpr char daemonConfigurationName[] = "runner-config.yaml";
inline constexpr char runnerLogName[] = "valdorn.log";

// The daemon's whole configuration: at debug level it prints the lines that tell its state.
inline constexpr char daemonConfiguration[] = "log:\n  level: debug\n";

// Main thread, once at launch before anything reads the defaults. Registers the fallbacks of the
// one-runner settings; the name is the computer's, lower-cased, with "-" for each blank.
void registerDefaults(const HostInfo& host, UserDefaults& defaults);

// The bundled act_runner if one was shipped, else the fixed place under the home folder, there or
// not: a missing one shows when the launch fails.
std::string actRunnerPath(const BundleResources& resources, const HostInfo& host);

// The PATH of a daemon: the colon-separated folders of `extra` first, so that they win, then
// fixed ones. Empty pieces are dropped, nothing else is trimmed, looked up or de-duplicated.
std::string pathEnv(std::string_view extra, std::string_view home);

// The folder that holds the runner list and every runner's data.
std::string applicationSupportFolder(std::string_view home);

}  // namespace Config

}  // namespace valdorn
