#include <QApplication>
#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Any warning that Qt prints while a test runs is a fault of ours, but for what the windowless
// platform says of itself.
void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& message) {
    const bool ofThePlatform = message.startsWith(QLatin1String("This plugin does not support"));
    if (type != QtDebugMsg && type != QtInfoMsg && !ofThePlatform)
        ADD_FAILURE() << "Qt warns: " << message.toStdString();
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // A desktop of our own: nothing of the account that runs the tests is read or written.
    const QTemporaryDir home;
    for (const char* folder : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        qputenv(folder, home.path().toUtf8());
    for (const char* proxy :
         {"http_proxy", "https_proxy", "all_proxy", "HTTP_PROXY", "HTTPS_PROXY"})
        qunsetenv(proxy);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    qInstallMessageHandler(failOnWarning);
    return RUN_ALL_TESTS();
}
