#include "platform/qt/QtWorkspace.h"

#include <QDesktopServices>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <algorithm>

#include "platform/Environment.h"
#include "platform/HostInfo.h"
#include "platform/NetworkSettings.h"

namespace valdorn {

namespace {

constexpr char settingsScheme[] = "x-apple.systempreferences";

// A relative folder would mean another program in each working folder.
QStringList searchFolders(const std::vector<std::string>& environment) {
    QStringList folders =
        QString::fromStdString(Environment::value(environment, "PATH").value_or(""))
            .split(QLatin1Char(':'));
    folders.removeIf([](const QString& folder) { return QDir::isRelativePath(folder); });
    return folders;
}

bool startAlone(const QString& program, const std::vector<std::string>& arguments,
                const std::string& folder) {
    QProcess process;
    process.setProgram(program);
    QStringList words;
    for (const std::string& argument : arguments)
        words += QString::fromStdString(argument);
    process.setArguments(words);
    process.setWorkingDirectory(QString::fromStdString(folder));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

}  // namespace

QtWorkspace::QtWorkspace(const HostInfo& host)
    : environment_(host.environment()), home_(host.homeFolder()) {}

bool QtWorkspace::openFile(const std::string& path) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(path)));
}

bool QtWorkspace::openUrl(const std::string& url) {
    const QUrl parsed(QString::fromStdString(url), QUrl::StrictMode);
    if (!parsed.isValid() || parsed.scheme().isEmpty())
        return false;
    return parsed.scheme() == QLatin1String(settingsScheme) ? openNetworkSettings()
                                                            : QDesktopServices::openUrl(parsed);
}

bool QtWorkspace::openNetworkSettings() const {
    const QStringList folders = searchFolders(environment_);
    if (folders.isEmpty())
        return false;  // Qt would search elsewhere
    const auto commands = NetworkSettings::commands(
        Environment::value(environment_, "XDG_CURRENT_DESKTOP").value_or(""));
    return std::any_of(commands.begin(), commands.end(), [&](const auto& command) {
        const QString program =
            QStandardPaths::findExecutable(QString::fromStdString(command.program), folders);
        return !program.isEmpty() && startAlone(program, command.arguments, home_);
    });
}

}  // namespace valdorn
