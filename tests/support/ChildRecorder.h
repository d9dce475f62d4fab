#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ChildLauncher.h"

namespace valdorn {

// Listens to one child and notes what it is told. Any thread; outlives the launcher it listens to.
class ChildRecorder {
public:
    enum class Credits { dropAtOnce, keep };

    explicit ChildRecorder(Credits credits = Credits::dropAtOnce) : credits_(credits) {}

    ChildHandlers handlers();

    // Wait until that has happened, for as long as a slow machine may need; false when it has not.
    bool waitForBytes(std::size_t count);
    bool waitForText(const std::string& text);
    bool waitForExit();
    bool waitForRelease();  // the handlers' closures are destroyed

    std::string output() const;
    std::vector<std::string> chunks() const;
    std::optional<ChildExit> exit() const;
    int callsAfterExit() const;

    // Lets go of the credits that are kept, and of later ones at once.
    void dropCredits();

private:
    void noteOutput(std::string_view chunk, OutputCredit credit);
    void noteExit(ChildExit exit);
    void noteRelease();
    bool waitFor(const std::function<bool()>& condition);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Credits credits_;
    std::vector<OutputCredit> kept_;
    std::string output_;
    std::vector<std::string> chunks_;
    std::optional<ChildExit> exit_;
    int callsAfterExit_ = 0;
    bool isReleased_ = false;
};

}  // namespace valdorn
