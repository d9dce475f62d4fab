#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulation/Random.h"

namespace valdorn::simulation {

// What is typed, printed and answered in a simulation: texts of every class that the program tells
// apart, and broken ones.
namespace Grammar {

// A line of a daemon's output without its end: often one of those that a daemon really prints, else
// fragments of them in any order.
std::string line(Random& random);

// A few lines with their ends, of which some are CR LF or missing.
std::string output(Random& random);

// More than an incomplete line may grow to, without any line end; or very many lines.
std::string giant(Random& random);

// A line that goes to the log, with those words in it, of about that many bytes.
std::string keptLine(std::string_view words, std::size_t bytes);

// The text in pieces, cut anywhere, also within a character; none is longer than a chunk may be.
std::vector<std::string> cut(Random& random, const std::string& text);

// What somebody types into a field, whatever it is for.
std::string field(Random& random);

// Folders for a PATH, with empty ones among them.
std::string folders(Random& random);

// What the registration tool prints.
std::string toolOutput(Random& random);

}  // namespace Grammar

}  // namespace valdorn::simulation
