#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// A desktop entry file, edited line by line: whatever is not changed keeps its bytes and place.
// Values are raw, with the file's own escapes (see escapedValue). One thread at a time.
//
// Only the group "Desktop Entry" is looked at; should it stand there twice, both count. Should a
// key stand there twice, the last one is what it says.
class DesktopEntry {
public:
    // An entry without lines.
    DesktopEntry() = default;
    explicit DesktopEntry(std::string_view text);

    // The key's value without the blanks around it, or nothing.
    std::optional<std::string> value(std::string_view key) const;

    // Gives the key a value, in its place or at the end of the group, which is made when missing.
    void set(std::string_view key, std::string_view value);

    // False when a line is neither blank, comment, group nor key: strict readers then refuse the
    // whole file.
    bool isWellFormed() const;

    // Takes out the lines that make the file ill-formed.
    void dropMalformedLines();

    // True when the file holds the group with no other keys than these, and no comment.
    bool holdsOnly(const std::vector<std::string_view>& keys) const;

    // The file's content.
    std::string text() const;

private:
    struct Line {
        enum class Kind { blank, comment, group, key, malformed };
        std::string bytes;  // with the line end, if it has one
        Kind kind = Kind::malformed;
        bool ours = false;  // a line of the group, or its header
        std::string key;
    };

    void classify();
    std::size_t endOfGroup();

    std::vector<Line> lines_;
};

// Escapes any text for use as a value: backslash, line end, tab, and a blank at either end, which
// readers would leave out.
std::string escapedValue(std::string_view text);

// The text that a raw value stands for. An unknown escape stands for itself.
std::string unescapedValue(std::string_view value);

// An Exec value that starts the program at that path without arguments, whatever characters the
// path is made of. (GLib 2.74 looks for the program before it reads "%%" as "%", so desktops built
// on it cannot start a program with a percent sign in its path; no spelling helps.)
std::string execValue(std::string_view program);

// The program that an Exec value starts, as written there: a path or a bare name.
std::string programOfExec(std::string_view value);

}  // namespace valdorn
