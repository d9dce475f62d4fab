// What starting.py, idling.py and spinner.py compare with: the least Qt program in the status bar,
// an icon and a menu with as many rows as ours. The argument `window` makes it show a window as
// well, `spinner` makes its icon turn.

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>

namespace {

constexpr int rows = 13;
constexpr int frames = 8;
constexpr int period = 200;  // milliseconds

void fill(QMenu& menu) {
    for (int row = 0; row < rows; ++row)
        menu.addAction(QStringLiteral("Entry %1").arg(row));
}

QPixmap hand(int pixels, int frame) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.translate(pixels / 2.0, pixels / 2.0);
    painter.rotate(360.0 * frame / frames);
    painter.fillRect(QRectF(-1, -pixels / 2.0, 2, pixels / 2.0), Qt::darkGreen);
    return pixmap;
}

QIcon plainIcon(int frame = 0) {
    QIcon icon;
    for (const int pixels : {16, 22, 24, 32, 48})
        icon.addPixmap(hand(pixels, frame));
    return icon;
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString what = QApplication::arguments().value(1);
    QMenu menu;
    fill(menu);
    QSystemTrayIcon item(plainIcon());
    item.setContextMenu(&menu);
    item.show();
    QLabel window(QStringLiteral("Nothing to report"));
    if (what == QLatin1String("window"))
        window.show();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &item,
                     [&item, frame = 0]() mutable { item.setIcon(plainIcon(++frame % frames)); });
    if (what == QLatin1String("spinner"))
        timer.start(period);
    return QApplication::exec();
}
