#include "ui/onboarding/RowButton.h"

#include <QFontMetrics>
#include <QStyle>
#include <QStyleOptionButton>
#include <algorithm>

#include "ui/StrongFrame.h"

namespace valdorn {

namespace {

// Wider than any style's least width, so that what comes on top of it is the frame alone.
constexpr int longTitle = 1000;

}  // namespace

RowButton::RowButton(const QString& title) : QPushButton(title) {
    new StrongFrame(*this);
}

QSize RowButton::sizeHint() const {
    const QSize usual = QPushButton::sizeHint();
    QStyleOptionButton option;
    initStyleOption(&option);
    const QSize title(longTitle, usual.height());
    const int frame =
        style()->sizeFromContents(QStyle::CT_PushButton, &option, title, this).width() - longTitle;
    const QFontMetrics metrics = fontMetrics();
    const int air = metrics.height();  // half a line on each side
    return {metrics.size(Qt::TextShowMnemonic, text()).width() + std::max(frame, air),
            usual.height()};
}

}  // namespace valdorn
