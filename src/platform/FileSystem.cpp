#include "platform/FileSystem.h"

#include <cstring>

namespace valdorn {

std::string FileError::description() const {
    // strerror's buffer is the calling thread's own in glibc.
    return path + ": " + std::strerror(errorNumber);
}

}  // namespace valdorn
