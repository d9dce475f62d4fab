#include "platform/posix/AutostartRegistry.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/ApplicationId.h"
#include "platform/FileSystem.h"
#include "platform/Path.h"
#include "platform/XdgFolders.h"
#include "platform/posix/DesktopEntry.h"

namespace valdorn {

namespace {

constexpr std::string_view hiddenKey = "Hidden";
constexpr std::string_view gnomeKey = "X-GNOME-Autostart-enabled";
constexpr std::string_view tryExecKey = "TryExec";
constexpr std::string_view scriptMark = "#!";

// What an entry of ours may be made of and still be nobody else's.
const std::vector<std::string_view> ourKeys = {"Type",     "Name",    "Exec",  "Icon",
                                               "Terminal", hiddenKey, gnomeKey};

bool says(const DesktopEntry& entry, std::string_view key, bool truth) {
    const auto value = entry.value(key);
    // The digits are what files older than the words hold.
    return value && (*value == (truth ? "true" : "false") || *value == (truth ? "1" : "0"));
}

std::string_view fileName(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

bool isEnabled(const DesktopEntry& entry) {
    return entry.isWellFormed() && !entry.value("Exec").value_or("").empty() &&
           !says(entry, hiddenKey, true) && !says(entry, gnomeKey, false);
}

}  // namespace

AutostartRegistry::AutostartRegistry(FileSystem& files, const HostInfo& host,
                                     std::string executable)
    : files_(files),
      executable_(std::move(executable)),
      folder_(appendPathComponent(XdgFolders::configuration(host), "autostart")),
      path_(appendPathComponent(folder_, std::string(applicationId) + ".desktop")) {}

LoginItemStatus AutostartRegistry::status() const {
    const auto content = files_.read(path_);
    return content.ok() && isEnabled(DesktopEntry(content.value())) ? LoginItemStatus::enabled
                                                                    : LoginItemStatus::notEnabled;
}

// As registering from another place writes it. A script of our name is somebody's wrapper.
bool AutostartRegistry::startsACopyOfUs(const std::string& exec, const std::string& program) const {
    const bool isBare = exec == execValue(program) || exec == escapedValue(program);
    if (!isBare || fileName(program) != fileName(executable_))
        return false;
    const auto file = files_.openForReading(program);
    if (!file.ok())
        return false;
    const auto start = file.value()->readAt(0, scriptMark.size());
    return start.ok() && start.value() != scriptMark;
}

void AutostartRegistry::pointAtUs(DesktopEntry& entry) const {
    entry.set("Exec", execValue(executable_));
    // Desktops skip an entry whose TryExec is not there.
    if (entry.value(tryExecKey))
        entry.set(tryExecKey, escapedValue(executable_));
}

std::optional<std::string> AutostartRegistry::write(const DesktopEntry& entry) {
    if (const FileOutcome failed = files_.replaceAtomically(path_, entry.text()))
        return failed->description();
    return std::nullopt;
}

std::optional<std::string> AutostartRegistry::registerItem() {
    if (executable_.empty())
        return "The program's own path is not known";
    const auto content = files_.read(path_);
    if (!content.ok() && content.error().errorNumber != ENOENT)
        return content.error().description();
    if (const FileOutcome failed = files_.makeFolders(folder_))
        return failed->description();

    DesktopEntry entry(content.ok() ? content.value() : "");
    entry.dropMalformedLines();
    entry.set("Type", "Application");
    entry.set("Name", "Valdorn");
    pointAtUs(entry);
    entry.set("Icon", applicationId);
    entry.set("Terminal", "false");
    if (entry.value(hiddenKey))
        entry.set(hiddenKey, "false");
    if (entry.value(gnomeKey))
        entry.set(gnomeKey, "true");
    return write(entry);
}

std::optional<std::string> AutostartRegistry::unregisterItem() {
    const auto content = files_.read(path_);
    if (!content.ok() && content.error().errorNumber == ENOENT)
        return std::nullopt;
    if (!content.ok())
        return content.error().description();

    DesktopEntry entry(content.value());
    if (entry.holdsOnly(ourKeys)) {
        const FileOutcome failed = files_.removeTree(path_);
        return failed ? std::optional(failed->description()) : std::nullopt;
    }
    entry.set(hiddenKey, "true");
    if (entry.value(gnomeKey))
        entry.set(gnomeKey, "false");
    return write(entry);
}

bool AutostartRegistry::refreshMovedExecutable() {
    const auto content = files_.read(path_);
    if (!content.ok() || executable_.empty())
        return false;
    DesktopEntry entry(content.value());
    if (!isEnabled(entry))
        return false;
    const std::string exec = *entry.value("Exec");
    const std::string program = programOfExec(exec);
    if (!program.starts_with('/') || program == executable_)
        return false;
    if (files_.exists(program) && !startsACopyOfUs(exec, program))
        return false;
    pointAtUs(entry);
    return !write(entry);
}

}  // namespace valdorn
