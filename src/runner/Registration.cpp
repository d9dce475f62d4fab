#include "runner/Registration.h"

#include <utility>

#include "text/Text.h"
#include "text/Utf8.h"

namespace valdorn {

void RegistrationOutput::append(std::string_view chunk) {
    for (std::size_t end = chunk.find('\n'); end != std::string_view::npos;
         end = chunk.find('\n')) {
        currentLine_ += chunk.substr(0, end);
        chunk.remove_prefix(end + 1);
        ++lineFeeds_;
        // A line feed never stands inside a multi-byte character, so lines can be judged alone.
        broken_ = broken_ || !isWellFormedUtf8(currentLine_);
        if (!currentLine_.empty())
            lastLine_ = std::exchange(currentLine_, {});
    }
    currentLine_ += chunk;
    if (currentLine_.size() > maxLineBytes)
        cutCurrentLine();
}

void RegistrationOutput::cutCurrentLine() {
    const std::size_t end = Text::completeLength(currentLine_);
    const std::string_view complete = std::string_view(currentLine_).substr(0, end);
    broken_ = broken_ || !isWellFormedUtf8(complete);
    currentLine_ =
        std::string(Text::lastCharacters(complete, keptTailCharacters)) + currentLine_.substr(end);
}

std::string RegistrationOutput::message(int exitStatus) const {
    if (broken_ || !isWellFormedUtf8(currentLine_)) {
        return "act_runner register failed (exit " + std::to_string(exitStatus) + ")";
    }
    if (!currentLine_.empty())
        return currentLine_;
    if (!lastLine_.empty())
        return lastLine_;
    return std::string(lineFeeds_, '\n');
}

Registration::Registration(ChildLauncher& launcher, ChildCommand command)
    : launcher_(launcher), command_(std::move(command)) {}

RegistrationOutcome Registration::run() const {
    RegistrationOutput output;
    const auto ended =
        launcher_.run(command_, [&output](std::string_view chunk) { output.append(chunk); });
    if (!ended)
        return ended.error();
    // A signal counts as a failure; its number stands where an exit code would.
    const ChildExit exit = ended.value();
    if (exit == ChildExit{ChildExit::Kind::exited, 0})
        return Registered{};
    return RunnerError{output.message(exit.number)};
}

}  // namespace valdorn
