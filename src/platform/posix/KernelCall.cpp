#include "platform/posix/KernelCall.h"

#include <cerrno>
#include <system_error>

namespace valdorn {

Descriptor orThrow(int number, const char* call) {
    requireSuccess(number >= 0, call);
    return Descriptor(number);
}

void requireSuccess(bool succeeded, const char* call) {
    if (!succeeded)
        throw std::system_error(errno, std::generic_category(), call);
}

}  // namespace valdorn
