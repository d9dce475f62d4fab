#include "platform/qt/QtPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace valdorn {

void QtPasteboard::setText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

void QtPasteboard::setSelectedText(const std::string& text) {
    QClipboard* const clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection())
        clipboard->setText(QString::fromStdString(text), QClipboard::Selection);
}

}  // namespace valdorn
