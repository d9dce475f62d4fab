#pragma once

#include <QStyledItemDelegate>

namespace valdorn {

// Draws a runner's row: with room around its text, and a highlight that is loud only while the list
// has the keyboard. Main thread only.
class RunnerItemDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

}  // namespace valdorn
