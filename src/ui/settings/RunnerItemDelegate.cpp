#include "ui/settings/RunnerItemDelegate.h"

#include "ui/SystemPalette.h"

namespace valdorn {

namespace {

constexpr int rowPadding = 4;        // above and below the text
constexpr double quietShare = 0.18;  // of the text's colour, in the highlight without the keyboard

}  // namespace

QSize RunnerItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 2 * rowPadding);
}

void RunnerItemDelegate::initStyleOption(QStyleOptionViewItem* option,
                                         const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    if (!option->state.testFlag(QStyle::State_Selected))
        return;
    // The highlight tells where the keyboard is: a frame within it would be one too many.
    option->state.setFlag(QStyle::State_HasFocus, false);
    if (option->widget->hasFocus())
        return;
    // So faint that text and symbol on it are those of any other row.
    option->state.setFlag(QStyle::State_Selected, false);
    option->backgroundBrush = SystemPalette::mixed(
        option->palette.color(QPalette::Base), option->palette.color(QPalette::Text), quietShare);
}

}  // namespace valdorn
