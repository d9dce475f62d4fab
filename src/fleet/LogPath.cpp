#include "fleet/LogPath.h"

#include <cstdlib>

#include "fleet/RunnersStore.h"
#include "platform/Path.h"
#include "runner/Config.h"

namespace valdorn {

std::string Config::logPath(const RunnersStore& store) {
    if (store.runners().empty())
        std::abort();  // our own mistake: the list is never empty
    return appendPathComponent(store.runners().front()->dataDir(), runnerLogName);
}

}  // namespace valdorn
