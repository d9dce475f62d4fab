#include "platform/qt/QtWorkspace.h"

#include <QDesktopServices>
#include <QUrl>

namespace valdorn {

bool QtWorkspace::openFile(const std::string& path) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(path)));
}

bool QtWorkspace::openUrl(const std::string& url) {
    const QUrl parsed(QString::fromStdString(url), QUrl::StrictMode);
    return parsed.isValid() && !parsed.scheme().isEmpty() && QDesktopServices::openUrl(parsed);
}

}  // namespace valdorn
