#include "LogLine.h"

#include <array>
#include <ctime>

namespace valdorn::demo {
namespace {

std::string_view name(Level level) {
    constexpr std::array<std::string_view, 4> names = {"debug", "info", "warning", "error"};
    return names.at(static_cast<std::size_t>(level));
}

std::string written(const std::tm& time, const char* format) {
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &time)};
}

// RFC 3339 in the local time zone: 2026-05-01T10:20:30+02:00, or Z for UTC.
std::string timeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const std::string time = written(local, "%Y-%m-%dT%H:%M:%S");
    if (local.tm_gmtoff == 0)
        return time + "Z";
    const std::string offset = written(local, "%z");
    return time + offset.substr(0, 3) + ":" + offset.substr(3);
}

std::string hexEscape(char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value / 16], digits[value % 16]};
}

std::string escaped(char byte) {
    switch (byte) {
        case '"':
            return "\\\"";
        case '\\':
            return "\\\\";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            // Bytes of multi-byte characters are negative or above 127 and stay as they are.
            return static_cast<unsigned char>(byte) < ' ' ? hexEscape(byte) : std::string(1, byte);
    }
}

}  // namespace

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char byte : text) {
        result += escaped(byte);
    }
    return result + '"';
}

LogLine::LogLine(Level level, std::string_view message, Caller caller)
    : level_(level), message_(message), caller_(caller) {}

LogLine& LogLine::error(std::string_view text) {
    fields_ += " error=" + quoted(text);
    return *this;
}

std::string LogLine::head() const {
    return "level=" + std::string(name(level_)) + " msg=" + quoted(message_);
}

std::string LogLine::forDaemon(bool withCaller) const {
    std::string line = "time=\"" + timeNow() + "\" " + head();
    if (withCaller) {
        line.append(" func=\"[").append(caller_.function).append("]\"");
        line.append(" file=\"[").append(caller_.place).append("]\"");
    }
    return line + fields_;
}

std::string LogLine::forRegister() const {
    return head() + fields_;
}

std::string jobLine(std::string_view label, std::string_view text) {
    return std::string("[").append(label).append("] ").append(text);
}

std::string jobOutput(std::string_view label, std::string_view text) {
    return std::string("[").append(label).append("]   | ").append(text);
}

}  // namespace valdorn::demo
