#include <QByteArray>
#include <QFile>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

#include <gtest/gtest.h>

#include "platform/qt/StreamedValues.h"

namespace valdorn {
namespace {

// A number, as Qt streams one.
const QByteArray number = QByteArray(R"(\0\0\0\x2\0\0\0\a))");

// Whether Qt reads a number in the file, which it does for a streamed one only.
bool isReadAsNumber(const QByteArray& ini) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("x.ini"));
    QFile file(path);
    EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(ini) == ini.size());
    file.close();
    const QSettings settings(path, QSettings::IniFormat);
    for (const QString& key : settings.allKeys()) {
        const QVariant value = settings.value(key);
        if (value.typeId() == QMetaType::Int)
            return true;
        for (const QVariant& one : value.toList()) {
            if (one.typeId() == QMetaType::Int)
                return true;
        }
    }
    return false;
}

TEST(StreamedValuesTest, IsFoundHoweverItIsWritten) {
    for (const QByteArray& begin : {QByteArray("a=@Variant("),
                                    QByteArray("[General]\r\na = \t@Variant("),
                                    QByteArray("b=1\ra=@Variant("),
                                    QByteArray("a=x, @Variant("),
                                    QByteArray("a=\"x,y\",@Variant("),
                                    QByteArray("a=\"\"@Variant("),
                                    QByteArray("a=@Var\"ian\"t("),
                                    QByteArray("a=\"@Var\" \t\"iant\"("),
                                    QByteArray("a=\\x40Variant("),
                                    QByteArray("a=\\x10040Variant("),
                                    QByteArray("a=\\100Variant("),
                                    QByteArray("a=@\\x56\\x00061\\162iant("),
                                    QByteArray("a=@Var\\\niant("),
                                    QByteArray("a=@Var\\\r\niant("),
                                    QByteArray("a=@Var\\\n\riant("),
                                    QByteArray("a=\\q@Variant("),
                                    QByteArray("a=\\x@Variant("),
                                    QByteArray("; \"\na=@Variant("),
                                    QByteArray("b=x;\"\na=@Variant("),
                                    QByteArray("\"=\"=\"\"\na=@Variant("),
                                    QByteArray("[\"]\n\"]\na=@Variant("),
                                    QByteArray("\xEF\xBB\xBF"
                                               "a=@Variant("),
                                    QByteArray("a=\xEF\xBB\xBF@Variant("),
                                    QByteArray("a=\"\xEF\xBB\xBF@Variant\"("),
                                    QByteArray("a=\xEF\"\"\xBB\xBF@Variant("),
                                    QByteArray("a=\\x40\xEF\xBB\xBFVariant("),
                                    QByteArray("a=\xEF,\xBB\xBF@Variant("),
                                    QByteArray("a=\xEF\xBB\"\",\xBF@Variant("),
                                    QByteArray("a=\xEF\\x40\xBB\xBFVariant("),
                                    QByteArray("a=\xEF\t,@Variant("),
                                    QByteArray("a=\xEF,\\x41\t,@Variant("),
                                    QByteArray("a=\xEF, \xBB\"\" \xBF@Variant("),
                                    QByteArray("b=\xEF\xBB\na=\\x40\xEF\\x56\xBB\xBF"
                                               "ariant(")}) {
        SCOPED_TRACE(begin.toStdString());
        EXPECT_TRUE(isReadAsNumber(begin + number));
        EXPECT_TRUE(holdsStreamedValue(begin + number));
    }
    EXPECT_TRUE(holdsStreamedValue("a=@DateTime(x)"));
}

// The text with an escape for each of its characters.
QByteArray escaped(const QByteArray& text, const char* form) {
    QByteArray all;
    for (const char c : text)
        all += QString::asprintf(form, static_cast<unsigned>(c)).toLatin1();
    return all;
}

TEST(StreamedValuesTest, IsFoundWithAllOfItEscaped) {
    for (const char* const form : {"\\x%x", "\\x%X", "\\%o"}) {
        const QByteArray ini = "a=" + escaped("@Variant(", form) + number;
        EXPECT_TRUE(isReadAsNumber(ini)) << form;
        EXPECT_TRUE(holdsStreamedValue(ini)) << form;
        EXPECT_TRUE(holdsStreamedValue("a=" + escaped("@DateTime(", form) + "x)")) << form;
    }
}

TEST(StreamedValuesTest, IsNotFoundInATextThatOnlyLooksLikeIt) {
    for (const QByteArray& begin : {QByteArray("a=@@Variant("),
                                    QByteArray("a=x@Variant("),
                                    QByteArray("a=\" @Variant("),
                                    QByteArray("a=\"x,@Variant("),
                                    QByteArray("a=\"x;@Variant("),
                                    QByteArray("a=\"x=@Variant("),
                                    QByteArray("a=\\n@Variant("),
                                    QByteArray("a=\\\"@Variant("),
                                    QByteArray("a=\\\\@Variant("),
                                    QByteArray("a=\\x1@Variant("),
                                    QByteArray("a=\\1@Variant("),
                                    QByteArray("a=\\x040a@Variant("),
                                    QByteArray("a=\\xfeff@Variant("),
                                    QByteArray("a=\xEF\xBB\xBF\xEF\xBB\xBF@Variant("),
                                    QByteArray("a=\xEF\xBB\xBB@Variant("),
                                    QByteArray("a=x,\xEF\xBB\xBF@Variant("),
                                    QByteArray("a=\xEF\xBB,@Variant("),
                                    QByteArray("a=\xEF\xBB\nb=\xBF@Variant("),
                                    QByteArray("; a=@Variant("),
                                    QByteArray("b=1 ; a=@Variant("),
                                    QByteArray("a=@variant("),
                                    QByteArray("a=@Variant"),
                                    QByteArray("a=@ByteArray(")}) {
        SCOPED_TRACE(begin.toStdString());
        const QByteArray ini = begin + number + (begin.contains('"') ? "\"" : "");
        EXPECT_FALSE(isReadAsNumber(ini));
        EXPECT_FALSE(holdsStreamedValue(ini));
    }
}

TEST(StreamedValuesTest, NothingIsReadBeyondTheEnd) {
    for (const QByteArray& ini : {QByteArray(), QByteArray("a=\\"), QByteArray("a=\\x"),
                                  QByteArray("a=\\1"), QByteArray("a=\\\r"), QByteArray(";")})
        EXPECT_FALSE(holdsStreamedValue(ini));
}

}  // namespace
}  // namespace valdorn
