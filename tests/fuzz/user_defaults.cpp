// A settings file of any bytes (the first piece of the input), read and written to; the second
// piece is a text to store.

#include <QByteArray>
#include <QFile>
#include <QSettings>
#include <QStringList>
#include <QVariant>
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <set>
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

QByteArray bytesOf(const std::string& path) {
    QFile file(QString::fromStdString(path));
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

// Whether the file is left alone, whatever is set. The last that is set may be what stood there before
// the first: each counts.
bool isOverlooked(const std::string& path) {
    const QByteArray before = bytesOf(path);
    bool isLeftAlone = true;
    for (const std::string probe : {"probe", "another"}) {
        Settings(path).defaults.setString(Config::extraPathKey, probe);
        isLeftAlone = isLeftAlone && bytesOf(path) == before;
    }
    return isLeftAlone;
}

// Whether the value is of a type that Qt has in plain text.
bool isPlain(const QVariant& value) {
    if (value.typeId() == QMetaType::QVariantList) {
        const QVariantList parts = value.toList();
        return std::all_of(parts.begin(), parts.end(), isPlain);
    }
    static const std::set<int> plain{
        QMetaType::UnknownType, QMetaType::QString, QMetaType::QStringList, QMetaType::QByteArray,
        QMetaType::QRect,       QMetaType::QSize,   QMetaType::QPoint};
    return plain.contains(value.typeId());
}

bool holdsPlainValuesOnly(const std::string& path) {
    const QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    return std::all_of(keys.begin(), keys.end(),
                       [&](const QString& key) { return isPlain(settings.value(key)); });
}

void checkOverlooked(const std::string& path) {
    for (const auto& [key, value] : valuesIn(path))
        require(!value || value == "false", "a file that is left alone holds nothing");
}

// What Qt (6.4) drops at the beginning of a text, each time it reads the file.
const std::string byteOrderMark = "\xEF\xBB\xBF";

std::string withoutMarks(std::string text) {
    for (auto at = text.find(byteOrderMark); at != std::string::npos;
         at = text.find(byteOrderMark, at))
        text.erase(at, byteOrderMark.size());
    return text;
}

bool holdMark(const Values& values) {
    return std::any_of(values.begin(), values.end(), [](const auto& entry) {
        return entry.second.value_or("").find(byteOrderMark) != std::string::npos;
    });
}

// After "another" has been set. `expected` is what the file said before.
void checkSetting(const std::string& path, Values expected, const std::string& text) {
    expected[Config::extraPathKey] = "another";
    require(valuesIn(path) == expected, "a text is stored, and the other values stay");

    Settings(path).defaults.setString(Config::labelsKey, text);
    expected[Config::labelsKey] = text;
    require(valuesIn(path) == expected, "a text comes back, and the other values stay");

    Settings(path).defaults.setBoolean(Config::hasConnectedKey, true);
    expected[Config::hasConnectedKey] = "true";
    require(valuesIn(path) == expected, "a truth comes back, and the other values stay");
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
    const std::string text = withoutMarks(plainText(pieceAt(pieces, 1)));
    const std::string path = writtenFile(pieces.front());
    const Values values = valuesIn(path);
    require(valuesIn(path) == values, "reading changes nothing");
    if (isOverlooked(path)) {
        checkOverlooked(path);
    } else {
        require(holdsPlainValuesOnly(path), "what Qt streams is not read");
        if (!holdMark(values))
            checkSetting(path, values, text);
    }
    std::remove(path.c_str());
    checkHandWriting(writtenByHand(text), text);
}

}  // namespace valdorn
