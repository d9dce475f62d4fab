#pragma once

#include <optional>
#include <string>

#include "platform/posix/ProcessFacts.h"

namespace valdorn {

// What a child writes down of itself before it runs its executable. Whoever launches it learns its id
// only when it runs already; if that program is killed in between, nobody else knows of the child.
//
// The text: a line "boot BOOT-ID", and the child's /proc/PID/stat.
struct BirthNote {
    std::string path;
    std::string heading;  // the first line

    // Pure; any thread. For children of that boot, the present one.
    static BirthNote at(std::string path, const std::string& boot);
};

// Any thread. Id and time of birth of the process that has written the text in `boot`, whether it
// lives or not; its owner is taken to be ours, as the text does not tell. Nothing when the text is of
// another boot or ends before the time of birth; one that ends within it tells another time.
std::optional<ProcessFacts> birthIn(const std::string& birthNote, const std::string& boot);

// Any thread; reads /proc. The process that has written the text in `boot`, the present one. Nothing
// when the text is cut short or of another boot, or its process has ended or is another user's.
std::optional<ProcessFacts> livingProcessOf(const std::string& birthNote, const std::string& boot);

// Any thread. Whether the process that has written the text in `boot`, the present one, has ended
// beyond doubt: nobody has its id, or somebody who was born at another time. One that is not reaped
// yet has not ended. False when the text is cut short or of another boot, and when nothing can be
// seen. Can tell without any descriptor that nobody has the id.
bool hasSurelyEnded(const std::string& birthNote, const std::string& boot);

}  // namespace valdorn
