// A minimal viewer of the last 5000 lines of a file, made of what Qt has: open_log_reference FILE.
// Ends when they are painted; prints what open_log prints.
#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>
#include <cstdio>

#include <unistd.h>

#include "support/Measuring.h"
#include "support/Offscreen.h"
#include "support/Paintings.h"
#include "support/Settling.h"

namespace {

constexpr int mostLines = 5000;
constexpr qint64 enoughBytes = qint64{1} << 20;

}  // namespace

int main(int count, char** arguments) {
    if (count != 2)
        return 2;
    valdorn::runOffscreen();
    QApplication application(count, arguments);
    const long before = valdorn::residentBytes();
    QFile file(QString::fromLocal8Bit(arguments[1]));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    file.seek(qMax<qint64>(file.size() - enoughBytes, 0));
    QByteArray text = file.readAll();
    text.chop(text.endsWith('\n') ? 1 : 0);
    qsizetype from = text.size();
    for (int lines = 0; lines < mostLines && from > 0; ++lines)
        from = text.lastIndexOf('\n', from - 1);
    text.remove(0, from + 1);
    QPlainTextEdit view;
    valdorn::Paintings paintings;
    paintings.watch(*view.viewport());
    view.setReadOnly(true);
    view.setMaximumBlockCount(mostLines);
    view.resize(720, 460);
    view.setPlainText(QString::fromUtf8(text));
    view.show();
    valdorn::settle();
    std::printf("%d %ld\n", view.blockCount(), valdorn::residentBytes() - before);
    std::fflush(stdout);
    _exit(paintings.number() > 0 ? 0 : 1);
}
