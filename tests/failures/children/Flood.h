#pragma once

// What the tests' daemon prints before it dies: so many lines, of which one in so many is to be kept.
namespace flood {

inline constexpr int lines = 1000;
inline constexpr int keptEvery = 50;

}  // namespace flood
