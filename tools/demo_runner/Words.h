#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace valdorn::demo {

// The unescaped rest of a line.
struct Text {
    std::string bytes;
    bool hasLineEnd;
};

// Takes the arguments of one step off its line, from left to right. `what` names an argument in
// error messages. Every member but empty() throws ScriptError when the line does not hold what is
// asked for.
class Words {
public:
    // `line` outlives this.
    explicit Words(std::string_view line);

    bool empty() const { return rest_.empty(); }
    void expectEnd() const;

    std::string word(const std::string& what);
    std::string rest(const std::string& what);  // never empty; inner blanks kept
    std::uint64_t number(const std::string& what, std::uint64_t max);
    std::uint64_t byteCount(const std::string& what);                 // 100B, 64KB, 1GB (decimal)
    std::chrono::milliseconds duration(const std::string& what);      // 500ms, 3s, 2m
    std::chrono::milliseconds lastDuration(const std::string& what);  // the line's last word

    // The rest, as it stands after one blank, with its escapes replaced; may be empty.
    Text text();

private:
    void skipBlanks();

    std::string_view rest_;
    std::string_view raw_;  // the rest with all but the first of its leading blanks
};

}  // namespace valdorn::demo
