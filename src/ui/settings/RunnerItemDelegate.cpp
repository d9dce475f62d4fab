#include "ui/settings/RunnerItemDelegate.h"

#include <QPainter>

#include "ui/SystemPalette.h"
#include "ui/TextFlow.h"

namespace valdorn {

namespace {

constexpr int rowPadding = 4;  // above and below the text
constexpr int framePoints = 2;
constexpr double quietShare = 0.18;  // of the text's colour, in the highlight without the keyboard

}  // namespace

QSize RunnerItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 2 * rowPadding);
}

void RunnerItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    QStyledItemDelegate::paint(painter, option, index);
    if (!option.state.testFlag(QStyle::State_Selected) || option.widget->hasFocus() ||
        !SystemPalette::isHighContrast(option.palette))
        return;
    painter->setPen(QPen(option.palette.color(QPalette::Text), framePoints));
    constexpr double inset = framePoints / 2.0;
    painter->drawRect(QRectF(option.rect).adjusted(inset, inset, -inset, -inset));
}

void RunnerItemDelegate::initStyleOption(QStyleOptionViewItem* option,
                                         const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = TextFlow::marked(option->direction, option->text);
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
