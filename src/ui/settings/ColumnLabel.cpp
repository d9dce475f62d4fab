#include "ui/settings/ColumnLabel.h"

#include <QFontMetrics>
#include <algorithm>
#include <utility>

namespace valdorn {

ColumnLabel::ColumnLabel(const QString& title, QStringList titles) : titles_(std::move(titles)) {
    setTextFormat(Qt::PlainText);
    setText(title);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
}

QSize ColumnLabel::sizeHint() const {
    ensurePolished();
    int widest = 0;
    for (const QString& title : titles_)
        widest = std::max(widest, fontMetrics().horizontalAdvance(title));
    return {widest, QLabel::sizeHint().height()};
}

}  // namespace valdorn
