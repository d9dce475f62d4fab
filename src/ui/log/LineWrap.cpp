#include "ui/log/LineWrap.h"

#include <QFontMetrics>
#include <QFontMetricsF>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>

namespace valdorn {

namespace {

// Enough for every alphabet; what does not repeat is not worth keeping.
constexpr std::size_t mostAdvances = 20000;

// Families of emoji are that long; beyond, somebody joins characters without end.
constexpr qsizetype longestKept = 16;

bool isAscii(QChar unit) {
    return unit.unicode() < 0x80;
}

// The control characters after ASCII, and those that turn the direction of the text around them.
bool isUnseen(char16_t code) {
    const bool isControl = code >= 0x80 && code < 0xA0;
    const bool isEmbedding = code >= 0x202A && code <= 0x202E;
    const bool isIsolate = code >= 0x2066 && code <= 0x2069;
    return isControl || isEmbedding || isIsolate;
}

// The symbol of a control character; other characters are their own.
QChar visible(QChar unit) {
    constexpr char16_t controlPictures = 0x2400;
    constexpr char16_t deletePicture = 0x2421;
    constexpr char16_t lineFeedPicture = 0x240A;
    const char16_t code = unit.unicode();
    if (code == u'\t')
        return unit;
    if (code < 0x20)
        return QChar(static_cast<char16_t>(controlPictures + code));
    if (code == 0x7F)
        return QChar(deletePicture);
    if (code == QChar::LineSeparator || code == QChar::ParagraphSeparator)
        return QChar(lineFeedPicture);
    return isUnseen(code) ? QChar(QChar::ReplacementCharacter) : unit;
}

bool isLineEnd(const QString& text, qsizetype at) {
    return text.at(at) == QLatin1Char('\r') && at + 1 < text.size() &&
           text.at(at + 1) == QLatin1Char('\n');
}

// At most longestShown units, no surrogate without its other half.
QString beginning(std::string_view line) {
    // A unit of UTF-16 comes from three bytes at the most.
    constexpr std::size_t enoughBytes = std::size_t{3} * LineWrap::longestShown;
    QString text = QString::fromUtf8(line.substr(0, enoughBytes));
    if (text.size() > LineWrap::longestShown) {
        const bool cutsInTwo = text.at(LineWrap::longestShown - 1).isLowSurrogate();
        text.truncate(LineWrap::longestShown - (cutsInTwo ? 2 : 1));
        text += QChar(0x2026);
    }
    return text;
}

// Marks beyond what a letter bears are shown as what cannot be shown.
void thinMarks(QString& text) {
    int marks = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isPair = text.at(at).isHighSurrogate() && at + 1 < text.size();
        const char32_t character =
            isPair ? QChar::surrogateToUcs4(text.at(at), text.at(at + 1)) : text.at(at).unicode();
        marks = QChar::isMark(character) ? marks + 1 : 0;
        if (marks > LineWrap::mostMarks) {
            text[at] = QChar(QChar::ReplacementCharacter);
            if (isPair)
                text[at + 1] = QChar(QChar::ReplacementCharacter);
            marks = LineWrap::mostMarks;
        }
        at += isPair ? 1 : 0;
    }
}

// Nothing but blanks and what ASCII shows, as nearly all lines are. Looks at all of it, since that
// is done many characters at a time: opening a window with 5000 lines takes 3 % less.
bool isPlain(const QString& text) {
    constexpr int shownByAscii = 0x7F - 0x20;
    int others = 0;
    for (const QChar unit : text)
        others |= unit.unicode() - 0x20 < 0 || unit.unicode() - 0x20 >= shownByAscii ? 1 : 0;
    return others == 0;
}

bool isAllAscii(const QString& text) {
    return std::all_of(text.begin(), text.end(), isAscii);
}

}  // namespace

// Takes in the characters of a line one after the other and notes where rows begin.
class LineWrap::Breaker {
public:
    explicit Breaker(qreal width) : width_(width) {}

    // A character at `at` that must fit.
    void letter(qsizetype at, qreal advance) {
        // Sums of fractions may exceed their exact value a little.
        constexpr qreal tolerance = 0.01;
        if (x_ + advance > width_ + tolerance && at > starts_.back()) {
            const bool afterBlank = blankEnd_ > starts_.back();
            begin(afterBlank ? blankEnd_ : at, afterBlank ? x_ - blankEndX_ : 0);
        }
        x_ += advance;
    }

    // A blank up to `end`: it may hang over the end of the row, and a row may begin after it.
    void blank(qsizetype end, qreal advance) {
        x_ += advance;
        blankEnd_ = end;
        blankEndX_ = x_;
    }

    void tab(qsizetype end, qreal distance) {
        blank(end, (std::floor(x_ / distance) + 1) * distance - x_);
    }

    void lineEnd(qsizetype next) { begin(next, 0); }

    std::vector<qsizetype> takeStarts() { return std::move(starts_); }

private:
    void begin(qsizetype at, qreal x) {
        starts_.push_back(at);
        x_ = x;
        blankEnd_ = 0;
    }

    const qreal width_;
    std::vector<qsizetype> starts_{0};
    qreal x_ = 0;             // where the next character goes
    qsizetype blankEnd_ = 0;  // where the last blank of this row ends, if after its start
    qreal blankEndX_ = 0;
};

LineWrap::LineWrap(const QFont& font) : font_(font) {
    constexpr int sample = 64;
    column_ = QFontMetricsF(font_).horizontalAdvance(QString(sample, QLatin1Char('0'))) / sample;
    rowHeight_ = QFontMetrics(font_).lineSpacing();
    ascent_ = QFontMetrics(font_).ascent();
}

QString LineWrap::shown(std::string_view line) {
    QString text = beginning(line);
    if (isPlain(text))
        return text;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (isLineEnd(text, at))
            ++at;
        else if (const QChar unit = text.at(at); visible(unit) != unit)
            text[at] = visible(unit);
    }
    if (!isAllAscii(text))
        thinMarks(text);
    return text;
}

std::vector<qsizetype> LineWrap::rowStarts(const QString& shown, qreal width) const {
    Breaker breaker(width);
    qsizetype at = 0;
    while (at < shown.size()) {
        const QChar unit = shown.at(at);
        const bool standsAlone = at + 1 == shown.size() || isAscii(shown.at(at + 1));
        if (unit == QLatin1Char('\t')) {
            breaker.tab(++at, column_ * tabColumns);
        } else if (isLineEnd(shown, at)) {
            at += 2;
            if (at < shown.size())
                breaker.lineEnd(at);
        } else if (!isAscii(unit) || !standsAlone) {
            at = passCharacters(shown, at, breaker);
        } else if (unit == QLatin1Char(' ')) {
            breaker.blank(++at, column_);
        } else {
            breaker.letter(at++, column_);
        }
    }
    return breaker.takeStarts();
}

// From one character up to the next plain one; the first may be an ASCII letter with marks.
qsizetype LineWrap::passCharacters(const QString& shown, qsizetype at, Breaker& breaker) const {
    qsizetype end = at + 1;
    while (end < shown.size() && !isAscii(shown.at(end)))
        ++end;
    const QString run = shown.mid(at, end - at);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, run);
    qsizetype from = 0;
    for (qsizetype to = finder.toNextBoundary(); to > from; to = finder.toNextBoundary()) {
        const QString character = run.mid(from, to - from);
        if (character.at(0).isSpace() && character.at(0) != QChar(QChar::Nbsp))
            breaker.blank(at + to, advance(character));
        else
            breaker.letter(at + from, advance(character));
        from = to;
    }
    return end;
}

qreal LineWrap::advance(const QString& character) const {
    if (character.size() > longestKept)
        return QFontMetricsF(font_).horizontalAdvance(character);
    if (advances_.size() >= mostAdvances)
        advances_.clear();
    const auto [known, isNew] = advances_.try_emplace(character, 0.0);
    if (isNew)
        known->second = QFontMetricsF(font_).horizontalAdvance(character);
    return known->second;
}

}  // namespace valdorn
