#pragma once

#include <chrono>
#include <functional>

namespace valdorn {

// Runs the event loop until the condition holds, and tells whether it came to hold. Sleeps in the
// kernel until an event comes; the patience is generous because it only passes when a test fails.
bool runUntil(const std::function<bool()>& condition,
              std::chrono::milliseconds patience = std::chrono::seconds{20});

// Runs what the event loop has ready now, posted events included.
void runReadyEvents();

}  // namespace valdorn
