#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace valdorn {

// A JSON value, read the plain way, for what the product's reading is compared with.
struct PlainJson {
    enum class Kind { null, truth, number, text, array, object };
    Kind kind = Kind::null;
    bool truth = false;
    std::string text;
    std::vector<PlainJson> elements;  // of an array, or the values of an object
    std::vector<std::string> names;   // of an object's values, in the order of the text

    // The value of an object's last member of that name; null when there is none.
    const PlainJson* member(std::string_view name) const;
};

// The value that the text is, by RFC 8259 and strictly: nothing behind it but blanks, well-formed
// UTF-8 throughout, no half of a surrogate pair, no number that a double cannot hold. A byte-order
// mark at the start is skipped. Recursive: for texts of some KB.
std::optional<PlainJson> plainJson(std::string_view text);

}  // namespace valdorn
