#include "ui/StatusColor.h"

namespace valdorn {

SystemColor statusColor(RunnerStatus status) {
    switch (status) {
        case RunnerStatus::notRegistered:
        case RunnerStatus::stopped:
            break;
        case RunnerStatus::starting:
            return SystemColor::yellow;
        case RunnerStatus::noNetwork:
            return SystemColor::red;
        case RunnerStatus::connected:
            return SystemColor::green;
        case RunnerStatus::building:
            return SystemColor::blue;
    }
    return SystemColor::secondary;
}

}  // namespace valdorn
