#include "platform/qt/StreamedValues.h"

#include <QString>
#include <optional>
#include <utility>

namespace valdorn {

namespace {

// Of a number of any base up to 16; 16 for what is no digit.
int digitOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : 16;
}

// Goes through a file, and knows how the present text begins when quotes and escapes are undone. All
// between two separators counts as a text, names and sections, too.
//
// Qt drops a byte order mark that is the first of what is not escaped in a value, also where escapes,
// quotes or commas stand between its bytes.
class TextBegins {
public:
    explicit TextBegins(QByteArrayView ini) : ini_(ini) {}

    // False at the end of the file.
    bool goOn() {
        if (isAtEnd())
            return false;
        const char c = ini_[at_++];
        if (c == '\\')
            addEscaped();
        else if (c == '"')
            quote();
        else if (isQuoted_)
            addPlain(c);
        else
            addUnquoted(c);
        return true;
    }

    bool isStreamed() const {
        return begin_ == QLatin1String("@Variant(") || begin_ == QLatin1String("@DateTime(");
    }

private:
    static constexpr QByteArrayView byteOrderMark{"\xEF\xBB\xBF"};

    bool isAtEnd() const { return at_ == ini_.size(); }

    void add(char16_t unit) {
        constexpr qsizetype enough = 11;  // more than the longer one of the texts above has
        if (begin_.size() < enough)
            begin_ += QChar(unit);
    }

    void addPlain(char c) {
        areBlanksSkipped_ = false;
        if (mayBeMark_ && c == byteOrderMark[markBytes_]) {
            mayBeMark_ = ++markBytes_ < byteOrderMark.size();
            return;
        }
        expectNoMark();
        add(static_cast<unsigned char>(c));
    }

    // Whatever has been begun was no mark, and none can follow in this value.
    void expectNoMark() {
        if (!std::exchange(mayBeMark_, false))
            return;
        for (const char begun : byteOrderMark.first(markBytes_))
            add(static_cast<unsigned char>(begun));
    }

    void quote() {
        isQuoted_ = !isQuoted_;
        areBlanksSkipped_ = !isQuoted_;
    }

    void separate(char separator) {
        begin_.clear();
        areBlanksSkipped_ = true;
        if (separator == ',')
            return;
        markBytes_ = 0;
        mayBeMark_ = true;
    }

    void addUnquoted(char c) {
        if (c == ';')
            skipComment();
        else if (QByteArrayView("=,\n\r").contains(c))
            separate(c);
        else if (c != ' ' && c != '\t')
            addPlain(c);
        else if (!areBlanksSkipped_)
            expectNoMark();
    }

    void addEscaped() {
        areBlanksSkipped_ = false;
        if (isAtEnd())
            return;
        const char c = ini_[at_++];
        if (c == 'x') {
            addNumber(16);
        } else if (digitOf(c) < 8) {
            --at_;
            addNumber(8);
        } else if (QByteArrayView("abfnrtv\"?'\\").contains(c)) {
            add(u'\\');  // some other character
        } else if ((c == '\n' || c == '\r') && !isAtEnd() &&
                   ini_[at_] == (c == '\n' ? '\r' : '\n')) {
            ++at_;
        }
    }

    // Of all digits that follow; of more than fit into a character the last ones count.
    void addNumber(int base) {
        std::optional<unsigned> number;
        for (; !isAtEnd() && digitOf(ini_[at_]) < base; ++at_)
            number = number.value_or(0) * static_cast<unsigned>(base) +
                     static_cast<unsigned>(digitOf(ini_[at_]));
        if (number)
            add(static_cast<char16_t>(*number));
    }

    void skipComment() {
        while (!isAtEnd() && ini_[at_] != '\n' && ini_[at_] != '\r')
            ++at_;
    }

    const QByteArrayView ini_;
    qsizetype at_ = 0;
    bool isQuoted_ = false;
    QString begin_;
    qsizetype markBytes_ = 0;  // of the mark, which the value may begin with
    bool mayBeMark_ = true;
    bool areBlanksSkipped_ = true;  // else they stand within a text, if only until it ends
};

}  // namespace

bool holdsStreamedValue(QByteArrayView ini) {
    TextBegins text(ini);
    while (text.goOn()) {
        if (text.isStreamed())
            return true;
    }
    return false;
}

}  // namespace valdorn
