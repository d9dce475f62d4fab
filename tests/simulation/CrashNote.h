#pragma once

#include <cstdint>

namespace valdorn::simulation {

struct Campaign;

// Tells on standard error which schedule a thread was playing when the process crashed: what nobody
// survives cannot be told by a test that failed.
namespace CrashNote {

// From here on, for the whole process; once. What handled crashes before goes on to do so.
void install();

// What this thread is about to play.
void playing(const Campaign& campaign, std::uint64_t seed);

}  // namespace CrashNote

}  // namespace valdorn::simulation
