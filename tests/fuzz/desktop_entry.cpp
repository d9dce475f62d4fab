// A desktop entry file of any bytes (the first piece of the input), edited and registered in; the
// second piece is a text to write into it and a path to start.

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Fuzzed.h"
#include "PlainEntry.h"
#include "platform/posix/AutostartRegistry.h"
#include "platform/posix/DesktopEntry.h"
#include "support/FixedHostInfo.h"
#include "support/MemoryFileSystem.h"

namespace valdorn {

namespace {

constexpr char program[] = "/opt/val dorn/100%/valdorn";
const std::vector<std::string> keys{"Type",     "Name",    "Exec",
                                    "Icon",     "Hidden",  "X-GNOME-Autostart-enabled",
                                    "Terminal", "TryExec", "Name[de]"};

void requireSame(const DesktopEntry& entry, const PlainEntry::Reading& reading) {
    require(entry.isWellFormed() == reading.isWellFormed, "the same lines can be read");
    for (const std::string& key : keys)
        require(entry.value(key) == reading.value(key),
                "the values are those of the plain reading");
}

void checkReading(const std::string& file) {
    const DesktopEntry entry(file);
    require(entry.text() == file, "what is not changed keeps its bytes");
    requireSame(entry, PlainEntry::read(file));
}

void checkSetting(const std::string& file, const std::string& key, const std::string& text) {
    DesktopEntry entry(file);
    entry.set(key, escapedValue(text));
    const DesktopEntry again(entry.text());
    for (const DesktopEntry* const read : {&std::as_const(entry), &again}) {
        const auto value = read->value(key);
        require(value && unescapedValue(*value) == text, "a text is read as it was set");
    }
    PlainEntry::Reading expected = PlainEntry::read(file);
    for (auto& [name, value] : expected.values)
        value = name == key ? *again.value(key) : value;
    if (!expected.value(key))
        expected.values.emplace_back(key, *again.value(key));
    requireSame(again, expected);
    // What a second setting changes again is the value only.
    DesktopEntry twice(entry.text());
    twice.set(key, escapedValue(text));
    require(twice.text() == entry.text(), "setting the same again changes nothing");
}

void checkDropping(const std::string& file) {
    DesktopEntry entry(file);
    entry.dropMalformedLines();
    PlainEntry::Reading expected = PlainEntry::read(file);
    expected.isWellFormed = true;
    requireSame(entry, expected);
    requireSame(DesktopEntry(entry.text()), expected);
}

void checkEscapes(const std::string& text) {
    const std::string value = escapedValue(text);
    require(value.find_first_of("\n\r\t") == std::string::npos, "a value is one line");
    require(unescapedValue(value) == text, "a text comes back as it was");
    require(programOfExec(execValue(text)) == text, "a path comes back as it was");
    require(PlainEntry::trimmed(execValue(text)) == execValue(text), "a quoted path has no blanks");
}

// Whether these lines stand in the file in this order, whatever is between.
bool holdsInOrder(const std::string& file, const std::vector<std::string>& wanted) {
    auto next = wanted.begin();
    for (const std::string& line : PlainEntry::lines(file)) {
        if (next != wanted.end() && line == *next)
            ++next;
    }
    return next == wanted.end();
}

// What somebody else has written and that can be read, without a last line that has no end.
std::vector<std::string> foreignLines(const std::string& file) {
    std::vector<std::string> lines;
    std::string group;
    for (const std::string& line : PlainEntry::lines(file)) {
        const std::string content = PlainEntry::trimmed(line);
        if (content.empty() || !line.ends_with('\n'))
            continue;
        const bool isComment = content.front() == '#';
        const bool isGroup = content.front() == '[' && content.back() == ']';
        if (isGroup)
            group = content;
        const std::size_t equals = content.find('=');
        const bool isKey = !group.empty() && equals != 0 && equals != std::string::npos;
        const std::string key = PlainEntry::trimmed(content.substr(0, equals));
        const bool isOurs =
            group == "[Desktop Entry]" && std::find(keys.begin(), keys.end(), key) != keys.end();
        if (isComment || isGroup || (isKey && !isOurs))
            lines.push_back(line);
    }
    return lines;
}

class Login {
public:
    explicit Login(const std::string& file) { entry_ = file; }

    void checkStatus() const {
        const PlainEntry::Reading reading = PlainEntry::read(entry_);
        const auto says = [&reading](const char* key, const char* word, const char* digit) {
            return reading.value(key) == word || reading.value(key) == digit;
        };
        const bool isOn = reading.isWellFormed && !reading.value("Exec").value_or("").empty() &&
                          !says("Hidden", "true", "1") &&
                          !says("X-GNOME-Autostart-enabled", "false", "0");
        require(isEnabled() == isOn, "it is on as the plain rules say");
    }

    void checkRefreshing() {
        const bool wasOn = isEnabled();
        const std::string before = entry_;
        if (registry_.refreshMovedExecutable())
            require(isEnabled() && wasOn && startsUs(), "only what is on is pointed at us");
        else
            require(entry_ == before, "an entry that stays keeps its bytes");
        require(!registry_.refreshMovedExecutable(), "there is nothing to renew twice");
    }

    void checkRegistering() {
        const std::vector<std::string> foreign = foreignLines(entry_);
        require(!registry_.registerItem(), "any file can be registered in");
        require(isEnabled() && startsUs(), "what was registered is on and starts us");
        require(holdsInOrder(entry_, foreign), "what others wrote keeps its bytes");
        const std::string before = entry_;
        require(!registry_.registerItem() && entry_ == before, "once is enough");
    }

    void checkUnregistering() {
        require(!registry_.unregisterItem(), "any file can be turned off");
        require(!isEnabled(), "what was turned off is off");
    }

private:
    bool isEnabled() const { return registry_.status() == LoginItemStatus::enabled; }

    bool startsUs() const {
        return programOfExec(DesktopEntry(entry_).value("Exec").value_or("")) == program;
    }

    MemoryFileSystem files_;
    FixedHostInfo host_;
    AutostartRegistry registry_{files_, host_, program};
    std::string& entry_ = files_.files[registry_.entryPath()];
};

}  // namespace

void fuzzed(std::string_view input) {
    const std::vector<std::string> pieces = piecesOf(input);
    const std::string& file = pieces.front();
    const std::string text = pieceAt(pieces, 1);
    checkReading(file);
    checkDropping(file);
    checkEscapes(text);
    for (const char* const key : {"Exec", "Hidden", "New"})
        checkSetting(file, key, text);
    Login(file).checkStatus();
    Login(file).checkUnregistering();
    Login login(file);
    login.checkRefreshing();
    login.checkRegistering();
    login.checkUnregistering();
}

}  // namespace valdorn
