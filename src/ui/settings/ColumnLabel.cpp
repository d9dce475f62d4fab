#include "ui/settings/ColumnLabel.h"

#include <QFontMetrics>
#include <algorithm>
#include <utility>

namespace valdorn {

ColumnLabel::ColumnLabel(const QString& title, QStringList titles)
    : StyledLabel(TextStyle::body), titles_(std::move(titles)) {
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
