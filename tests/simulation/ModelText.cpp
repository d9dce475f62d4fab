#include "simulation/ModelText.h"

#include <cstdint>

#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

std::uint8_t byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

bool isWithin(std::uint8_t byte, unsigned low, unsigned high) {
    return byte >= low && byte <= high;
}

// What may stand second in a sequence, by its first byte: short forms of what fits into less,
// surrogates and what lies beyond the last plane are none.
bool maySecondFollow(std::uint8_t first, std::uint8_t second) {
    switch (first) {
        case 0xE0:
            return isWithin(second, 0xA0, 0xBF);
        case 0xED:
            return isWithin(second, 0x80, 0x9F);
        case 0xF0:
            return isWithin(second, 0x90, 0xBF);
        case 0xF4:
            return isWithin(second, 0x80, 0x8F);
        default:
            return isWithin(second, 0x80, 0xBF);
    }
}

std::size_t lengthBy(std::uint8_t first) {
    if (first < 0x80)
        return 1;
    if (isWithin(first, 0xC2, 0xDF))
        return 2;
    if (isWithin(first, 0xE0, 0xEF))
        return 3;
    return isWithin(first, 0xF0, 0xF4) ? 4 : 0;
}

struct Sequence {
    std::size_t length = 1;
    bool isWhole = false;
};

Sequence sequenceAt(std::string_view bytes, std::size_t start) {
    const std::size_t wanted = lengthBy(byteAt(bytes, start));
    std::size_t length = 1;
    while (length < wanted && start + length < bytes.size()) {
        const std::uint8_t next = byteAt(bytes, start + length);
        if (length == 1 ? !maySecondFollow(byteAt(bytes, start), next)
                        : !isWithin(next, 0x80, 0xBF))
            break;
        ++length;
    }
    return {length, length == wanted};
}

bool startsWithAt(const std::string& text, std::size_t at, std::string_view part) {
    return text.compare(at, part.size(), part) == 0;
}

bool has(std::string_view line, std::string_view part) {
    return line.find(part) != std::string_view::npos;
}

}  // namespace

bool ModelText::isUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const Sequence sequence = sequenceAt(bytes, at);
        if (!sequence.isWhole)
            return false;
        at += sequence.length;
    }
    return true;
}

std::string ModelText::decoded(std::string_view bytes) {
    std::string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const Sequence sequence = sequenceAt(bytes, at);
        text.append(sequence.isWhole ? bytes.substr(at, sequence.length) : "\xEF\xBF\xBD");
        at += sequence.length;
    }
    return text;
}

std::size_t ModelText::findLineFeed(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\n' && (at == 0 || text[at - 1] != '\r'))
            return at;
    }
    return std::string_view::npos;
}

std::vector<std::string> ModelText::lines(std::string_view bytes) {
    std::vector<std::string> all;
    const std::string text = decoded(bytes);
    std::string_view rest = text;
    for (std::size_t end = findLineFeed(rest); end != std::string_view::npos;
         end = findLineFeed(rest)) {
        all.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    if (!rest.empty())
        all.emplace_back(rest);
    return all;
}

std::string ModelText::lastCharacters(const std::string& text, std::size_t count) {
    std::size_t at = text.size();
    for (std::size_t taken = 0; taken < count && at > 0; ++taken) {
        --at;
        while (at > 0 && isWithin(byteAt(text, at), 0x80, 0xBF))
            --at;
        if (at > 0 && (startsWithAt(text, at - 1, "\r\n") || startsWithAt(text, at, "\xCC\x81")))
            --at;
    }
    return text.substr(at);
}

std::string ModelText::lowered(std::string_view text) {
    std::string all(text);
    char before = '\0';
    for (char& letter : all) {
        const auto code = static_cast<std::uint8_t>(letter);
        // U+00C0 to U+00DE, all but the multiplication sign.
        const bool isCapital = before == '\xC3' ? isWithin(code, 0x80, 0x9E) && code != 0x97
                                                : isWithin(code, 'A', 'Z');
        if (isCapital)
            letter = static_cast<char>(code + 0x20);
        before = letter;
    }
    return all;
}

bool ModelText::containsIgnoringCase(std::string_view line, std::string_view query) {
    return has(lowered(line), lowered(query));
}

ModelLine::ModelLine(std::string_view line) {
    readVersion(line);
    readJob(line);
    readEvent(line);
    const bool isStructured = line.starts_with("time=\"") && !has(line, "level=debug");
    isKept = isStructured || line.starts_with("Error:");
}

void ModelLine::readVersion(std::string_view line) {
    constexpr std::string_view words = "with version: ";
    const std::size_t found = line.find(words);
    if (found == std::string_view::npos)
        return;
    std::string text;
    for (const char letter : line.substr(found + words.size())) {
        if (letter == ',' || letter == ' ')
            break;
        text += letter;
    }
    if (!text.empty())
        version = text;
}

void ModelLine::readJob(std::string_view line) {
    const std::size_t close = line.find(']');
    if (!line.starts_with('[') || close == std::string_view::npos)
        return;
    const std::string inner(line.substr(1, close - 1));
    std::size_t first = 0;
    while (first < inner.size() && inner[first] == '/')
        ++first;
    const std::size_t slash = inner.find('/', first);
    const bool hasBoth = slash != std::string::npos && slash + 1 < inner.size();
    if (hasBoth && !has(std::string_view(inner).substr(slash + 1), " "))
        job = inner;
    else
        reached<"text in brackets that is no label">();
}

bool ModelLine::readRepository(std::string_view line) {
    constexpr std::string_view words = " repo is ";
    const std::size_t found = line.find(words);
    if (found == std::string_view::npos)
        return false;
    for (const char letter : line.substr(found + words.size())) {
        if (letter != ' ')
            repository += letter;
        else if (!repository.empty())
            break;
    }
    return !repository.empty();
}

void ModelLine::readEvent(std::string_view line) {
    if (readRepository(line))
        says = Says::repository;
    else if (has(line, "Running job with maxParallel"))
        says = Says::jobStarted;
    else if (has(line, "Worker") && has(line, "finished ("))
        says = Says::jobFinished;
    else if (has(line, "declare successfully"))
        says = Says::declared;
    else if (has(line, "no route to host") || has(line, "permission denied"))
        says = Says::blocked;
}

}  // namespace valdorn::simulation
