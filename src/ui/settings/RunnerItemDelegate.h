#pragma once

#include <QStyledItemDelegate>

namespace valdorn {

// Draws a runner's row: with room around its text, and a highlight that is loud only while the list
// has the keyboard; where contrast is high, a frame while it has not. Main thread only.
class RunnerItemDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

}  // namespace valdorn
