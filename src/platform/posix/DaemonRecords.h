#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/ProcessFacts.h"

namespace valdorn {

// The text of a daemon ledger. UTF-8 or whatever bytes the paths are made of:
//
//   valdorn daemons 1
//   boot BOOT-ID
//   daemon PID START-TICKS OWNER EXECUTABLE FOLDER
//   end
//
// There may be any number of daemon lines, with one tab between two fields. In the two paths a backslash, a tab and a line feed are written as \\, \t and \n. The last line
// tells a whole file from one that was cut short.
struct DaemonRecords {
    std::string boot;
    std::vector<ProcessFacts> daemons;
};

// The line that names the boot, with its end. Birth notes begin with it, too.
std::string bootLine(const std::string& boot);

std::string textOf(const DaemonRecords& records);

// Nothing unless the text is whole and every line of it makes sense.
std::optional<DaemonRecords> daemonRecordsIn(std::string_view text);

}  // namespace valdorn
