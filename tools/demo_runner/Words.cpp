#include "Words.h"

#include <charconv>
#include <optional>

#include "Script.h"

namespace valdorn::demo {
namespace {

constexpr std::string_view blanks = " \t\r";

struct Unit {
    std::string_view name;
    std::uint64_t factor;
};

// More milliseconds or bytes than any test has patience for, and no sum of them overflows.
constexpr std::uint64_t maxAmount = 1'000'000'000'000;

std::optional<std::uint64_t> toNumber(std::string_view digits, int base) {
    std::uint64_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
    if (digits.empty() || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

template <std::size_t N>
std::uint64_t amount(const std::string& word, const std::string& what, const Unit (&units)[N]) {
    const std::size_t split = std::min(word.find_first_not_of("0123456789"), word.size());
    const auto number = toNumber(std::string_view(word).substr(0, split), 10);
    for (const Unit& unit : units) {
        if (number && *number <= maxAmount / unit.factor && word.substr(split) == unit.name) {
            return *number * unit.factor;
        }
    }
    throw ScriptError("\"" + word + "\" is no " + what);
}

std::chrono::milliseconds toDuration(const std::string& word, const std::string& what) {
    static constexpr Unit units[] = {{"ms", 1}, {"s", 1000}, {"m", 60'000}};
    return std::chrono::milliseconds(amount(word, what, units));
}

char hexByte(std::string_view digits) {
    const auto number = digits.size() == 2 ? toNumber(digits, 16) : std::nullopt;
    if (!number) {
        throw ScriptError("\\x needs two hexadecimal digits");
    }
    return static_cast<char>(static_cast<unsigned char>(*number));
}

char simpleEscape(char letter) {
    constexpr std::string_view letters = "nrt0e\\";
    constexpr std::string_view bytes("\n\r\t\0\033\\", 6);
    const std::size_t index = letters.find(letter);
    if (index == std::string_view::npos) {
        throw ScriptError(std::string("unknown escape \\") + letter);
    }
    return bytes[index];
}

}  // namespace

Words::Words(std::string_view line) : rest_(line) {
    skipBlanks();
}

void Words::skipBlanks() {
    raw_ = rest_.empty() ? rest_ : rest_.substr(1);
    rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
}

void Words::expectEnd() const {
    if (!rest_.empty()) {
        throw ScriptError("\"" + std::string(rest_) + "\" is too much");
    }
}

std::string Words::word(const std::string& what) {
    if (rest_.empty()) {
        throw ScriptError(what + " is missing");
    }
    std::string taken(rest_.substr(0, rest_.find_first_of(blanks)));
    rest_.remove_prefix(taken.size());
    skipBlanks();
    return taken;
}

std::string Words::rest(const std::string& what) {
    if (rest_.empty()) {
        throw ScriptError(what + " is missing");
    }
    std::string taken(rest_.substr(0, rest_.find_last_not_of(blanks) + 1));
    rest_ = {};
    return taken;
}

std::uint64_t Words::number(const std::string& what, std::uint64_t max) {
    const std::string taken = word(what);
    const auto number = toNumber(taken, 10);
    if (!number || *number > max) {
        throw ScriptError("\"" + taken + "\" is no " + what + " from 0 to " + std::to_string(max));
    }
    return *number;
}

std::uint64_t Words::byteCount(const std::string& what) {
    static constexpr Unit units[] = {
        {"B", 1}, {"KB", 1000}, {"MB", 1000'000}, {"GB", 1'000'000'000}};
    return amount(word(what), what, units);
}

std::chrono::milliseconds Words::duration(const std::string& what) {
    return toDuration(word(what), what);
}

std::chrono::milliseconds Words::lastDuration(const std::string& what) {
    const std::size_t end = rest_.find_last_not_of(blanks) + 1;
    const std::string_view all = rest_.substr(0, end);
    const std::size_t split = all.find_last_of(blanks);
    if (split == std::string_view::npos) {
        throw ScriptError(what + " is missing");
    }
    rest_ = all.substr(0, split);
    return toDuration(std::string(all.substr(split + 1)), what);
}

Text Words::text() {
    Text text{{}, true};
    const std::string_view raw = raw_;
    rest_ = {};
    for (std::size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] != '\\' || i + 1 == raw.size()) {
            text.bytes += raw[i];
        } else if (raw[++i] == 'x') {
            text.bytes += hexByte(raw.substr(i + 1, 2));
            i += 2;
        } else if (raw[i] == 'c' && i + 1 == raw.size()) {
            text.hasLineEnd = false;
        } else {
            text.bytes += simpleEscape(raw[i]);
        }
    }
    return text;
}

}  // namespace valdorn::demo
