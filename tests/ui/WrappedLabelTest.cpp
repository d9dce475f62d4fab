#include <QAccessible>
#include <QHelpEvent>
#include <QToolTip>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/WrappedLabel.h"

namespace valdorn {
namespace {

class WrappedLabelTest : public testing::Test {
protected:
    WrappedLabelTest() {
        layout->addWidget(label);
        layout->addStretch();
    }
    void show(const QString& text, int width) {
        label->setText(text);
        window.resize(width, 200);
        window.show();
        QCoreApplication::sendPostedEvents();
    }
    int lineHeight() const { return label->fontMetrics().height(); }
    QString toolTip() {
        QHelpEvent event(QEvent::ToolTip, {1, 1}, label->mapToGlobal(QPoint(1, 1)));
        QCoreApplication::sendEvent(label, &event);
        return QToolTip::text();
    }

    const Looks looks{Scheme::light};
    QWidget window;
    QVBoxLayout* const layout = new QVBoxLayout(&window);
    WrappedLabel* const label = new WrappedLabel(TextStyle::caption, 3);
};

TEST_F(WrappedLabelTest, ShortTextIsOneLine) {
    show(QStringLiteral("Registered ✓"), 300);
    EXPECT_EQ(label->shownLines(), QStringList{QStringLiteral("Registered ✓")});
    EXPECT_EQ(label->height(), lineHeight());
    EXPECT_FALSE(toolTip().contains(QStringLiteral("Registered")));
}

TEST_F(WrappedLabelTest, BreaksBetweenWordsAndGrows) {
    show(QStringLiteral("failed to register runner"), 140);
    EXPECT_EQ(label->shownLines().join(QLatin1Char(' ')),
              QStringLiteral("failed to register runner"));
    EXPECT_EQ(label->shownLines().size(), 2);
    EXPECT_EQ(label->height(), 2 * lineHeight());
}

TEST_F(WrappedLabelTest, BreaksAWordThatIsWiderThanTheLabel) {
    const QString word(60, QLatin1Char('x'));
    show(word, 300);
    EXPECT_GT(label->shownLines().size(), 1);
    EXPECT_EQ(label->shownLines().join(QString()), word);
}

TEST_F(WrappedLabelTest, WhatTheLinesDoNotHoldIsTheTooltip) {
    const QString text = QStringLiteral("word <b> ").repeated(100) + QStringLiteral("end");
    show(text, 200);
    EXPECT_EQ(label->shownLines().size(), 3);
    EXPECT_TRUE(label->shownLines().back().endsWith(QChar(0x2026)));
    EXPECT_EQ(label->height(), 3 * lineHeight());
    EXPECT_TRUE(toolTip().contains(QStringLiteral("&lt;b&gt;")));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), text);
}

TEST_F(WrappedLabelTest, TextThatJustFillsItsLinesHasNoTooltip) {
    show(QStringLiteral("aaaaaaaaaa bbbbbbbbbb cccccccccc"), 90);
    EXPECT_EQ(label->shownLines().size(), 3);
    EXPECT_FALSE(toolTip().contains(QStringLiteral("aaaa")));
}

TEST_F(WrappedLabelTest, FitsIntoTheWidthThatItAsksFor) {
    for (const char* const text : {"Error: no t", "Registered ✓", "iiiiii", "Wwwww W", "x"}) {
        label->setText(QString::fromUtf8(text));
        const int wanted = label->sizeHint().width();
        EXPECT_EQ(label->heightForWidth(wanted), lineHeight()) << text;
        EXPECT_EQ(label->heightForWidth(wanted - 1) > lineHeight(), label->text().size() > 1)
            << text;
    }
}

TEST_F(WrappedLabelTest, ShortTextAsksForNoMoreThanItsWidth) {
    label->setText(QStringLiteral("x"));
    EXPECT_EQ(label->minimumSizeHint().width(), label->sizeHint().width());
}

TEST_F(WrappedLabelTest, BlanksAtTheEndAreNothingThatIsLeftOut) {
    show(QStringLiteral("aaaaaaaaaa bbbbbbbbbb cccccccccc \n"), 90);
    EXPECT_EQ(label->shownLines().size(), 3);
    EXPECT_FALSE(toolTip().contains(QStringLiteral("aaaa")));
}

TEST_F(WrappedLabelTest, LineBreaksAreBlanksAndAnEmptyTextIsALine) {
    show(QStringLiteral("one\ntwo"), 300);
    EXPECT_EQ(label->shownLines(), QStringList{QStringLiteral("one two")});
    show(QString(), 300);
    EXPECT_EQ(label->height(), lineHeight());
}

TEST_F(WrappedLabelTest, EndlessTextIsKeptShort) {
    show(QString(900'000, QLatin1Char('x')), 300);
    EXPECT_LT(label->text().size(), 3000);
    EXPECT_LT(label->minimumSizeHint().width(), 150);
}

TEST_F(WrappedLabelTest, StandsAtTheSideWhereItsLanguageBegins) {
    show(QStringLiteral("left"), 300);
    const auto inked = [this](int from, int to) {
        const QImage seen = Pictures::render(*label);
        for (int x = from; x < to; ++x) {
            for (int y = 0; y < seen.height(); ++y) {
                if (seen.pixelColor(x, y).lightness() < 128)
                    return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(inked(0, 60));
    EXPECT_FALSE(inked(label->width() - 60, label->width()));
    window.setLayoutDirection(Qt::RightToLeft);
    EXPECT_TRUE(inked(label->width() - 60, label->width()));
    EXPECT_FALSE(inked(0, 60));
}

}  // namespace
}  // namespace valdorn
