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

// An input as the several texts that it is made of: FE ends one, FD begins a run: FD, two bytes of
// a number (high byte first), a byte; it stands for twice that number of that byte, so that few
// bytes reach what is bounded at 64 KiB. Neither byte occurs in UTF-8, and FF is left to be ill-
// formed with. There is always one piece; runs beyond 256 KiB in all are left out.
std::vector<std::string> piecesOf(std::string_view input);

// The piece, or an empty text where there are not so many.
std::string pieceAt(const std::vector<std::string>& pieces, std::size_t index);

}  // namespace valdorn
