#include "PlainJson.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "support/PlainLines.h"

namespace valdorn {

namespace {

using Kind = PlainJson::Kind;

struct NoJson {};

class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    PlainJson document() {
        PlainJson json = value();
        blanks();
        expect(rest_.empty());
        return json;
    }

private:
    static void expect(bool holds) {
        if (!holds)
            throw NoJson();
    }

    bool skip(std::string_view text) {
        if (!rest_.starts_with(text))
            return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    char next() {
        expect(!rest_.empty());
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    void blanks() {
        while (skip(" ") || skip("\t") || skip("\n") || skip("\r")) {
        }
    }

    PlainJson value() {
        blanks();
        PlainJson json;
        if (skip("null"))
            return json;
        if (skip("true"))
            return truth(true);
        if (skip("false"))
            return truth(false);
        if (skip("\""))
            return text();
        if (skip("["))
            return array();
        if (skip("{"))
            return object();
        return number();
    }

    static PlainJson truth(bool value) {
        PlainJson json;
        json.kind = Kind::truth;
        json.truth = value;
        return json;
    }

    PlainJson array() {
        PlainJson json;
        json.kind = Kind::array;
        blanks();
        if (skip("]"))
            return json;
        do {
            json.elements.push_back(value());
            blanks();
        } while (skip(","));
        expect(skip("]"));
        return json;
    }

    PlainJson object() {
        PlainJson json;
        json.kind = Kind::object;
        blanks();
        if (skip("}"))
            return json;
        do {
            blanks();
            expect(skip("\""));
            json.names.push_back(text().text);
            blanks();
            expect(skip(":"));
            json.elements.push_back(value());
            blanks();
        } while (skip(","));
        expect(skip("}"));
        return json;
    }

    std::string digits() {
        std::string found;
        while (!rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9')
            found += next();
        return found;
    }

    PlainJson number() {
        std::string all = skip("-") ? "-" : "";
        const std::string whole = digits();
        expect(!whole.empty() && (whole == "0" || whole.front() != '0'));
        all += whole;
        if (skip(".")) {
            const std::string fraction = digits();
            expect(!fraction.empty());
            all += "." + fraction;
        }
        if (skip("e") || skip("E")) {
            all += "e";
            all += skip("-") ? "-" : skip("+") ? "+" : "";
            const std::string power = digits();
            expect(!power.empty());
            all += power;
        }
        expect(std::isfinite(std::strtod(all.c_str(), nullptr)));
        PlainJson json;
        json.kind = Kind::number;
        return json;
    }

    char16_t unit() {
        unsigned value = 0;
        for (int count = 0; count < 4; ++count) {
            const int digit = u_digit(static_cast<unsigned char>(next()), 16);
            expect(digit >= 0);
            value = value * 16 + static_cast<unsigned>(digit);
        }
        return static_cast<char16_t>(value);
    }

    std::string escaped() {
        static constexpr std::string_view signs = "\"\\/bfnrt";
        static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const char sign = next();
        if (const std::size_t at = signs.find(sign); at != std::string_view::npos)
            return {meanings[at]};
        expect(sign == 'u');
        icu::UnicodeString character(unit());
        if (U16_IS_LEAD(character[0])) {
            expect(skip("\\u"));
            character += unit();
        }
        const auto point = static_cast<std::uint32_t>(character.char32At(0));
        expect(!U_IS_SURROGATE(point) && character.countChar32() == 1);
        std::string bytes;
        return character.toUTF8String(bytes);
    }

    PlainJson text() {
        PlainJson json;
        json.kind = Kind::text;
        for (char c = next(); c != '"'; c = next()) {
            expect(static_cast<unsigned char>(c) >= 0x20);
            json.text += c == '\\' ? escaped() : std::string(1, c);
        }
        return json;
    }

    std::string_view rest_;
};

}  // namespace

const PlainJson* PlainJson::member(std::string_view name) const {
    const PlainJson* found = nullptr;
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (names[index] == name)
            found = &elements[index];
    }
    return found;
}

std::optional<PlainJson> plainJson(std::string_view text) {
    const std::string bytes(text);
    if (plainText(bytes) != bytes)
        return std::nullopt;
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    try {
        return Reader(text).document();
    } catch (const NoJson&) {
        return std::nullopt;
    }
}

}  // namespace valdorn
