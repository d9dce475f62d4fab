#include "platform/ErrorText.h"

#include <cstring>

namespace valdorn {

std::string errorText(int errorNumber) {
    // strerror would speak the language of the desktop as soon as Qt has set the locale.
    const char* const text = strerrordesc_np(errorNumber);
    return text != nullptr ? text : "error " + std::to_string(errorNumber);
}

}  // namespace valdorn
