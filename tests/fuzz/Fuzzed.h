#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// What each program of this folder is for: looks whether what the product makes of the input is
// what the plain rules make of it, and ends the program by require() where it is not. Any bytes are
// input; calls do not depend on each other.
void fuzzed(std::string_view input);

// Says what does not hold and aborts, which the fuzzer and the replay both tell as a finding.
// `rule` is what should be.
void require(bool holds, const char* rule);

// An input as the several texts that it is made of: FE, which occurs in no UTF-8, ends one; FF is
// left to be ill-formed with. There is always one piece.
std::vector<std::string> piecesOf(std::string_view input);

// The same, where few bytes are to reach what is bounded at 64 KiB: FD, which occurs in no UTF-8
// either, begins a run. Two bytes of a number follow (high byte first), and a byte; it stands for
// twice that number of that byte. Runs beyond 256 KiB in all are left out.
std::vector<std::string> piecesWithRunsOf(std::string_view input);

// The piece, or an empty text where there are not so many.
std::string pieceAt(const std::vector<std::string>& pieces, std::size_t index);

}  // namespace valdorn
