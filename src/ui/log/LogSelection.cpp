#include "ui/log/LogSelection.h"

#include <algorithm>
#include <unordered_map>

namespace valdorn {

namespace {

using LineNumbers = std::unordered_map<LogLine, std::size_t>;

LineNumbers numbersOf(const LogLines& lines) {
    LineNumbers numbers;
    numbers.reserve(lines.size());
    for (std::size_t number = 0; number < lines.size(); ++number)
        numbers.emplace(lines[number], number);
    return numbers;
}

LogPosition moved(LogPosition position, const LogLines& before, const LineNumbers& numbers,
                  LogPosition end) {
    for (std::size_t line = position.line; line < before.size(); ++line) {
        const auto found = numbers.find(before[line]);
        if (found != numbers.end())
            return {found->second, line == position.line ? position.at : 0};
    }
    return end;
}

}  // namespace

void LogSelection::keepUp(const LogLines& before, const LogRows& after) {
    if (isEmpty() && caret_ == LogPosition{})
        return;
    const LineNumbers numbers = numbersOf(after.lines());
    anchorBegin_ = moved(anchorBegin_, before, numbers, after.end());
    anchorEnd_ = moved(anchorEnd_, before, numbers, after.end());
    caret_ = moved(caret_, before, numbers, after.end());
}

QString LogSelection::text(const LogRows& rows) const {
    if (isEmpty())
        return {};
    QString text;
    for (std::size_t line = first().line; line <= last().line; ++line) {
        const QString whole = QString::fromUtf8(*rows.lines()[line]);
        const qsizetype from = line == first().line ? first().at : 0;
        // What is not shown of an endless line goes with the end of what is.
        const bool upToEnd = line < last().line || last().at == rows.shown(line).size();
        if (line > first().line)
            text += QLatin1Char('\n');
        text += upToEnd ? whole.mid(from) : whole.mid(from, last().at - from);
    }
    return text;
}

}  // namespace valdorn
