// A minimal viewer of the last 5000 lines of a file, made of what Qt has: open_log_reference FILE.
// Ends when they are painted; prints how many they are and the growth of resident memory.
#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>
#include <cstdio>

#include <unistd.h>

#include "support/Measuring.h"

namespace {

constexpr int mostLines = 5000;
constexpr qint64 enoughBytes = qint64{1} << 20;

}  // namespace

int main(int count, char** arguments) {
    if (count != 2)
        return 2;
    QApplication application(count, arguments);
    const long before = valdorn::residentBytes();
    QFile file(QString::fromLocal8Bit(arguments[1]));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    file.seek(qMax<qint64>(file.size() - enoughBytes, 0));
    QByteArray text = file.readAll();
    text.chop(text.endsWith('\n') ? 1 : 0);
    QPlainTextEdit view;
    view.setReadOnly(true);
    view.setMaximumBlockCount(mostLines);
    view.resize(720, 460);
    view.setPlainText(QString::fromUtf8(text));
    view.show();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    std::printf("%d %ld\n", view.blockCount(), valdorn::residentBytes() - before);
    std::fflush(stdout);
    _exit(0);
}
