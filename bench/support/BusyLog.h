#pragma once

#include <QTemporaryDir>
#include <fstream>
#include <string>

namespace valdorn {

// A line as a busy act_runner writes it at debug level, without its end; one of twenty is a warning.
inline std::string busyLine(long number) {
    return std::string("time=\"2026-03-09T14:05:00Z\" level=") +
           (number % 20 == 0 ? "warning" : "debug") + " msg=\"step " + std::to_string(number) +
           ": docker exec in job container docker exec\" file=\"[executor.go:116]\"";
}

// Lines with their ends.
inline std::string busyText(long first, long lines) {
    std::string text;
    for (long number = first; number < first + lines; ++number)
        text += busyLine(number) + '\n';
    return text;
}

// A log in a folder of its own that goes away with this. One thread at a time.
class BusyLog {
public:
    explicit BusyLog(long lines) : file_(path(), std::ios::app) { append(busyText(0, lines)); }

    std::string path() const { return folder_.filePath(QStringLiteral("log")).toStdString(); }

    // Ends when the kernel has it.
    void append(const std::string& text) {
        file_ << text;
        file_.flush();
    }

private:
    QTemporaryDir folder_;
    std::ofstream file_;
};

}  // namespace valdorn
