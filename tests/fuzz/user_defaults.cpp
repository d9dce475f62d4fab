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
#include "support/MemoryFileSystem.h"
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

// The settings in a file whose folder is there.
struct Settings {
    MemoryFileSystem files;
    IniUserDefaults defaults;

    explicit Settings(const std::string& path) : defaults(files, path) {}
};

Values valuesIn(const std::string& path) {
    const Settings settings(path);
    Values values;
    for (const std::string& key : textKeys)
        values[key] = settings.defaults.string(key);
    values[Config::hasConnectedKey] =
        settings.defaults.boolean(Config::hasConnectedKey) ? "true" : "false";
    return values;
}

// Nobody has written such a file by hand, and it is not to be read.
bool isStrange(const std::string& bytes) {
    bool isQts = false;
    for (const std::string type : {"@Variant(", "@DateTime("}) {
        for (std::size_t at = bytes.find(type); at != bytes.npos; at = bytes.find(type, at + 1))
            isQts = isQts || at == 0 || bytes[at - 1] != '@';
    }
    return isQts || bytes.size() > 65536;
}

void checkStrange(const std::string& path, const Values& values) {
    for (const std::string& key : textKeys)
        require(!values.at(key), "a strange file holds nothing");
    Settings(path).defaults.setBoolean(Config::hasConnectedKey, true);
    require(valuesIn(path) == values, "a strange file is left alone");
    std::remove(path.c_str());
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

// All that is expected here is what was written: nothing comes from a reading before.
void checkHandWriting(const std::string& text, const std::string& stored) {
    Values expected;
    std::string bytes = "[General]\n";
    for (const std::string& key : textKeys) {
        expected[key] = key == Config::labelsKey ? text : text + "/of/" + key;
        bytes += key + "=" + *expected[key] + "\n";
    }
    expected[Config::hasConnectedKey] = "true";
    const std::string path = writtenFile(bytes + "hasConnected=true\n");
    require(valuesIn(path) == expected, "plain texts and a truth are read as they stand");

    Settings(path).defaults.setString(Config::extraPathKey, stored);
    expected[Config::extraPathKey] = stored;
    Settings(path).defaults.setBoolean(Config::hasConnectedKey, false);
    expected[Config::hasConnectedKey] = "false";
    require(valuesIn(path) == expected, "what is stored comes back beside what was written");
    std::remove(path.c_str());
}

}  // namespace

void fuzzed(std::string_view input) {
    const std::vector<std::string> pieces = piecesOf(input);
    const std::string text = plainText(pieceAt(pieces, 1));
    const std::string path = writtenFile(pieces.front());
    Values expected = valuesIn(path);
    require(valuesIn(path) == expected, "reading changes nothing");
    if (isStrange(pieces.front()))
        return checkStrange(path, expected);

    Settings(path).defaults.setString(Config::labelsKey, text);
    expected[Config::labelsKey] = text;
    require(valuesIn(path) == expected, "a text comes back, and the other values stay");

    Settings(path).defaults.setBoolean(Config::hasConnectedKey, true);
    expected[Config::hasConnectedKey] = "true";
    require(valuesIn(path) == expected, "a truth comes back, and the other values stay");
    std::remove(path.c_str());
    checkHandWriting(writtenByHand(text), text);
}

}  // namespace valdorn
