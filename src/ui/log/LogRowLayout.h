#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QTextLayout>

#include "ui/log/LineWrap.h"

class QPainter;
class QPalette;

namespace valdorn {

// One row of a wrapped line, ready to be drawn or asked where its characters stand. Positions are
// counted from the beginning of the row; places are device-independent pixels from its left end.
// Main thread only.
class LogRowLayout {
public:
    // The row from `begin` up to `end` of a shown line.
    LogRowLayout(const LineWrap& wrap, const QString& shown, qsizetype begin, qsizetype end);

    // Selects what is drawn as selected, in the palette's colours.
    void select(qsizetype from, qsizetype to, const QPalette& palette);
    void selectNothing() { selected_.clear(); }

    void draw(QPainter& painter, QPointF topLeft, const QColor& color) const;

    qreal xAt(qsizetype position) const;
    qsizetype positionAt(qreal x) const;
    qreal width() const;

private:
    QTextLayout layout_;
    const qreal
        ascent_;  // where the text stands in every row, whatever other fonts it is drawn with
    QList<QTextLayout::FormatRange> selected_;
};

}  // namespace valdorn
