#include "fleet/LogPath.h"

#include "fleet/RunnersStore.h"
#include "platform/Path.h"
#include "runner/Config.h"

namespace valdorn {

std::string Config::logPath(const RunnersStore& store) {
    return appendPathComponent(store.first()->dataDir(), runnerLogName);
}

}  // namespace valdorn
