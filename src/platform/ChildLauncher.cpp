#include "platform/ChildLauncher.h"

#include "platform/ErrorText.h"

namespace valdorn {

namespace {

const char* act(LaunchError::Step step) {
    switch (step) {
        case LaunchError::Step::prepare:
            return "The process could not be created";
        case LaunchError::Step::workingFolder:
            return "The working folder could not be entered";
        case LaunchError::Step::execute:
            return "The executable could not be started";
        case LaunchError::Step::interrupted:
            break;
    }
    return "The program is quitting";
}

}  // namespace

std::string LaunchError::description() const {
    std::string text = act(step);
    if (!subject.empty())
        text += ": " + subject;
    if (errorNumber != 0)
        text += ": " + errorText(errorNumber);
    return text;
}

}  // namespace valdorn
