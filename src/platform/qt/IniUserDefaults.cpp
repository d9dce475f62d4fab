#include "platform/qt/IniUserDefaults.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QStringList>
#include <QVariant>
#include <tuple>
#include <utility>

#include "platform/FileSystem.h"
#include "platform/qt/StreamedValues.h"

namespace valdorn {

namespace {

bool isFileOrNothing(const QString& path) {
    const QFileInfo file(path);
    return !file.exists() || file.isFile();
}

// Far more than the settings take, and a bound for what Qt makes of the file.
constexpr qint64 maxFileBytes = qint64{64} * 1024;

// Whether QSettings may look at what stands there, which it does for each write as well.
bool isFitOrNothing(const QString& path) {
    if (!isFileOrNothing(path))
        return false;
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return true;  // as nothing: Qt cannot read it either
    const QByteArray content = file.read(maxFileBytes + 1);
    return content.size() <= maxFileBytes && !holdsStreamedValue(content);
}

// QSettings waits for its lock: until one that somebody keeps is 30 seconds old, and without end for
// what is no file.
bool canBeLocked(const QString& path) {
    const QString lockPath = path + QStringLiteral(".lock");
    if (!isFileOrNothing(lockPath))
        return false;
    QLockFile lock(lockPath);
    return lock.tryLock() || lock.error() != QLockFile::LockFailedError;
}

}  // namespace

IniUserDefaults::IniUserDefaults(FileSystem& files, const std::string& path)
    : files_(files), folder_(path.substr(0, path.rfind('/'))) {
    const QString file = QString::fromStdString(path);
    // Qt would take a path that is not UTF-8 for another one, which is nobody's.
    const bool isNamed = QFile::encodeName(file).toStdString() == path;
    if (isNamed && isFitOrNothing(file))
        settings_.emplace(file, QSettings::IniFormat);
}

bool IniUserDefaults::canBeWritten() const {
    return settings_ && isFitOrNothing(settings_->fileName()) && canBeLocked(settings_->fileName());
}

std::optional<QString> IniUserDefaults::stored(const std::string& key) const {
    const QString name = QString::fromStdString(key);
    if (const auto unsaved = unsaved_.find(name); unsaved != unsaved_.end())
        return unsaved->second;
    if (!settings_ || !settings_->contains(name))
        return std::nullopt;
    const QVariant value = settings_->value(name);
    // A comma that nobody quoted makes a list of one text.
    if (value.metaType() == QMetaType::fromType<QStringList>())
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

std::optional<std::string> IniUserDefaults::string(const std::string& key) const {
    if (const auto value = stored(key))
        return value->toStdString();
    if (const auto fallback = fallbacks_.find(key); fallback != fallbacks_.end())
        return fallback->second;
    return std::nullopt;
}

bool IniUserDefaults::boolean(const std::string& key) const {
    const QString value = stored(key).value_or(QString());
    return value == QLatin1String("true") || value == QLatin1String("1") ||
           value == QLatin1String("yes");
}

void IniUserDefaults::setString(const std::string& key, const std::string& value) {
    store(key, QString::fromStdString(value));
}

void IniUserDefaults::setBoolean(const std::string& key, bool value) {
    store(key, value ? QStringLiteral("true") : QStringLiteral("false"));
}

void IniUserDefaults::store(const std::string& key, const QString& value) {
    const QString name = QString::fromStdString(key);
    if (stored(key) == value && !unsaved_.contains(name))
        return;
    unsaved_.insert_or_assign(name, value);
    if (!canBeWritten())
        return;
    // Qt would make it open to others. Where it cannot be made, nothing can be written either.
    std::ignore = files_.makeFolders(folder_);
    for (const auto& [waiting, latest] : std::exchange(unsaved_, {}))
        settings_->setValue(waiting, latest);
    // A refusing disk changes only the settings' status; the values hold in memory.
    settings_->sync();
}

void IniUserDefaults::registerFallbacks(const std::map<std::string, std::string>& fallbacks) {
    for (const auto& [key, value] : fallbacks)
        fallbacks_.insert_or_assign(key, value);
}

}  // namespace valdorn
