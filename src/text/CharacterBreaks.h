#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace valdorn {

// Walks over a text by user-perceived characters: a letter with its marks, a flag or a CR LF pair is
// one. Positions are byte offsets; ill-formed bytes count as U+FFFD. Begins at the start of the text,
// and looks no further than it is walked. Thread-compatible.
class CharacterBreaks {
public:
    // What ICU can address.
    static constexpr std::size_t longestBytes = INT32_MAX;

    // The text, at most longestBytes of it, outlives this.
    explicit CharacterBreaks(std::string_view text);
    CharacterBreaks(const CharacterBreaks&) = delete;
    CharacterBreaks& operator=(const CharacterBreaks&) = delete;
    ~CharacterBreaks();

    // Goes one character on and tells where that is; at the end it stays there.
    std::size_t next();
    // Goes one character back and tells where that is; at the start it stays there.
    std::size_t previous();
    // Goes to the end of the text and tells where that is.
    std::size_t last();

private:
    struct Walk;
    std::unique_ptr<Walk> walk_;
};

}  // namespace valdorn
