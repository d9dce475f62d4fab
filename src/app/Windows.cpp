#include "app/Windows.h"

namespace valdorn::Windows {

WindowDescription settings() {
    return {WindowKind::settings, "Valdorn", 480, 340, false};
}

WindowDescription log() {
    return {WindowKind::log, "Valdorn — Log", 720, 460, true};
}

WindowDescription status() {
    return {WindowKind::status, "Valdorn — Runner Status", 480, 260, true};
}

WindowDescription onboarding() {
    return {WindowKind::onboarding, "Valdorn", 460, 300, false};
}

}  // namespace valdorn::Windows
