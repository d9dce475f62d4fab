#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn::simulation {

// Text as the model reads it: byte by byte, without any library of Unicode's.
namespace ModelText {

// True when every byte belongs to a well-formed sequence.
bool isUtf8(std::string_view bytes);

// Each maximal part of an ill-formed sequence becomes one U+FFFD.
std::string decoded(std::string_view bytes);

// Where the first line feed stands that is a character of its own: none behind a carriage return.
std::size_t findLineFeed(std::string_view text);

// The pieces between those line feeds; an empty last one is dropped.
std::vector<std::string> lines(std::string_view bytes);

// The last `count` characters as people see them, for the characters that the simulation prints: a
// CR LF pair, a letter with the combining acute, and everything else by itself.
std::string lastCharacters(const std::string& text, std::size_t count);

// In small letters, for the letters that the simulation uses: those of ASCII and of Latin-1.
std::string lowered(std::string_view text);

// True when `line` contains `query`, whose letters are ASCII, whatever the case of either.
bool containsIgnoringCase(std::string_view line, std::string_view query);

}  // namespace ModelText

// What one output line says, in the order of the rules.
struct ModelLine {
    enum class Says { repository, jobStarted, jobFinished, declared, blocked, nothing };

    explicit ModelLine(std::string_view line);

    std::optional<std::string> version;
    std::optional<std::string> job;
    Says says = Says::nothing;
    std::string repository;
    bool isKept = false;  // in the runner's log

private:
    void readVersion(std::string_view line);
    void readJob(std::string_view line);
    void readEvent(std::string_view line);
    bool readRepository(std::string_view line);
};

}  // namespace valdorn::simulation
