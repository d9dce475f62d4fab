#pragma once

#include <array>
#include <string_view>

namespace valdorn {

// Which lines of a log are wanted, by the level that they state. Pure values; any thread.
enum class LevelFilter { all, info, warning, error };

// In the order in which people choose from them.
inline constexpr std::array<LevelFilter, 4> levelFilters{LevelFilter::all, LevelFilter::info,
                                                         LevelFilter::warning, LevelFilter::error};

// The filter's title as people read it.
std::string_view rawValue(LevelFilter filter);

// True when the line states that level as "level=…" anywhere; case counts. `all` takes every line.
bool passes(LevelFilter filter, std::string_view line);

}  // namespace valdorn
