// Types a text into the filter of the log window, letter by letter, and takes it away again, some
// times over: typing FILE TEXT TIMES.
//
// Prints how many lines the file has shown and, for each key, the nanoseconds of the main thread until
// the rows are painted.
#include <QKeyEvent>
#include <QLineEdit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "support/LogWindow.h"

namespace {

void press(QWidget& target, Qt::Key key, const QString& text) {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&target, &down);
    QCoreApplication::sendEvent(&target, &up);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4)
        return 2;
    QApplication application(count, arguments);
    valdorn::LogWindow window(arguments[1]);
    auto& filter = *window.view->findChild<QLineEdit*>();
    const QString text = QString::fromLocal8Bit(arguments[2]);
    std::vector<long long> times;
    const auto type = [&](Qt::Key key, const QString& letter) {
        const auto begin = std::chrono::steady_clock::now();
        press(filter, key, letter);
        valdorn::settle();
        times.push_back(std::chrono::nanoseconds(std::chrono::steady_clock::now() - begin).count());
    };
    for (int time = std::atoi(arguments[3]); time > 0; --time) {
        for (const QChar letter : text)
            type(Qt::Key_unknown, letter);
        for (qsizetype letter = text.size(); letter > 0; --letter)
            type(Qt::Key_Backspace, QString());
    }
    std::printf("%zu", window.rows->rows().lines().size());
    for (const long long time : times)
        std::printf(" %lld", time);
    std::printf("\n");
    std::fflush(stdout);
    _exit(0);
}
