// Does what spawn does by QProcess: spawn_qprocess COUNT MEBIBYTES STAMP COMMAND [ARGUMENT...].
#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <cstdio>
#include <cstdlib>

#include "support/stamps.h"

int main(int count, char** arguments) {
    if (count < 5)
        return 2;
    const QCoreApplication application(count, arguments);
    grow(std::atol(arguments[2]));
    volatile long long& left = *openStamp(arguments[3]);
    const QString command = QString::fromLocal8Bit(arguments[4]);
    const QStringList words = QCoreApplication::arguments().mid(5);
    for (long number = std::atol(arguments[1]); number > 0; --number) {
        left = 0;
        long long known = 0;
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setStandardInputFile(QProcess::nullDevice());
        QObject::connect(&process, &QProcess::finished, [&known] {
            known = nanoseconds();
            QCoreApplication::quit();
        });
        const long long begin = nanoseconds();
        process.start(command, words);
        const long long launched = nanoseconds();
        QCoreApplication::exec();
        std::printf("%lld %lld %lld\n", launched - begin, known - begin, left ? known - left : 0);
        rest();
    }
}
