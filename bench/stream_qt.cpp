// What a plain Qt program does with a child's output: stream_qt LOG COMMAND ARGUMENT...
//
// QProcess, a QString for each line, one search after the other. Prints how many lines there were,
// how many were kept, and how many held a text.
#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStringList>
#include <cstdio>

namespace {

bool isKept(const QString& line) {
    return line.startsWith(QLatin1String("Error:")) ||
           (line.startsWith(QLatin1String("time=\"")) &&
            !line.contains(QLatin1String("level=debug")));
}

bool tells(const QString& line) {
    const auto holds = [&](const char* text) { return line.contains(QLatin1String(text)); };
    const bool finished = holds("Worker") && holds("finished (");
    return holds(" repo is ") || holds("Running job with maxParallel") || finished ||
           holds("declare successfully") || holds("no route to host") ||
           holds("permission denied") || holds("with version: ");
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3)
        return 2;
    QCoreApplication application(count, arguments);
    QStringList command = QCoreApplication::arguments().mid(1);
    QFile log(command.takeFirst());
    if (!log.open(QIODevice::Append))
        return 1;
    long lines = 0, kept = 0, telling = 0;
    QProcess child;
    child.setProcessChannelMode(QProcess::MergedChannels);
    QObject::connect(&child, &QProcess::readyRead, [&] {
        while (child.canReadLine()) {
            const QString line = QString::fromUtf8(child.readLine());
            ++lines;
            if (isKept(line)) {
                ++kept;
                log.write(line.toUtf8());
            }
            telling += tells(line) ? 1 : 0;
        }
    });
    QObject::connect(&child, &QProcess::finished, [] { QCoreApplication::quit(); });
    const QString program = command.takeFirst();
    child.start(program, command);
    QCoreApplication::exec();
    std::printf("%ld %ld %ld\n", lines, kept, telling);
    return 0;
}
