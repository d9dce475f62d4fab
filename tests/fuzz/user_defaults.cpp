// A settings file of any bytes (the first piece of the input), read and written to; the second
// piece is a text to store.

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzzed.h"
#include "platform/qt/IniUserDefaults.h"
#include "runner/Config.h"
#include "support/PlainLines.h"
#include "support/TemporaryFolder.h"

namespace valdorn {

namespace {

const std::vector<std::string> textKeys{Config::instanceURLKey, Config::runnerNameKey,
                                        Config::labelsKey, Config::extraPathKey};

// Qt keeps in mind what stood in a file of that name and time: each has a name of its own.
std::string writtenFile(const std::string& bytes) {
    static const TemporaryFolder folder;
    static std::size_t count = 0;
    const std::string path = folder / std::to_string(++count) + ".ini";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

using Values = std::map<std::string, std::optional<std::string>>;

Values valuesIn(const std::string& path) {
    const IniUserDefaults defaults(path);
    Values values;
    for (const std::string& key : textKeys)
        values[key] = defaults.string(key);
    values[Config::hasConnectedKey] = defaults.boolean(Config::hasConnectedKey) ? "true" : "false";
    return values;
}

// Without what the format gives a meaning to, but with commas, which it takes for those of a list.
std::string writtenByHand(const std::string& text) {
    std::string plain;
    for (const char c : text) {
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ',' || c == ':' || c == '/')
            plain += c;
    }
    return plain;
}

void checkHandWriting(const std::string& text) {
    const std::string path = writtenFile("[General]\nlabels=" + text + "\n");
    require(IniUserDefaults(path).string(Config::labelsKey) == text,
            "plain text is read as it stands");
    std::remove(path.c_str());
}

}  // namespace

void fuzzed(std::string_view input) {
    const std::vector<std::string> pieces = piecesOf(input);
    const std::string text = plainText(pieceAt(pieces, 1));
    const std::string path = writtenFile(pieces.front());
    Values expected = valuesIn(path);
    require(valuesIn(path) == expected, "reading changes nothing");

    IniUserDefaults(path).setString(Config::labelsKey, text);
    expected[Config::labelsKey] = text;
    require(valuesIn(path) == expected, "a text comes back, and the other values stay");

    IniUserDefaults(path).setBoolean(Config::hasConnectedKey, true);
    expected[Config::hasConnectedKey] = "true";
    require(valuesIn(path) == expected, "a truth comes back, and the other values stay");
    std::remove(path.c_str());
    checkHandWriting(writtenByHand(text));
}

}  // namespace valdorn
