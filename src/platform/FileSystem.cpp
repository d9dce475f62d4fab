#include "platform/FileSystem.h"

#include "platform/ErrorText.h"

namespace valdorn {

std::string FileError::description() const {
    return path + ": " + errorText(errorNumber);
}

}  // namespace valdorn
