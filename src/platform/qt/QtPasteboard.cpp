#include "platform/qt/QtPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace valdorn {

void QtPasteboard::setText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

}  // namespace valdorn
