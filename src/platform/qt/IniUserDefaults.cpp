#include "platform/qt/IniUserDefaults.h"

#include <QFileInfo>
#include <QLockFile>
#include <QStringList>
#include <QVariant>

namespace valdorn {

namespace {

// Whoever else writes the settings is done sooner.
constexpr int lockPatienceMilliseconds = 200;

bool isFileOrNothing(const QString& path) {
    const QFileInfo file(path);
    return !file.exists() || file.isFile();
}

// QSettings waits without end for its lock, whatever stands there.
bool canBeLocked(const QString& path) {
    const QString lockPath = path + QStringLiteral(".lock");
    if (!isFileOrNothing(lockPath))
        return false;
    QLockFile lock(lockPath);
    return lock.tryLock(lockPatienceMilliseconds) || lock.error() != QLockFile::LockFailedError;
}

}  // namespace

IniUserDefaults::IniUserDefaults(const std::string& path) {
    const QString file = QString::fromStdString(path);
    if (isFileOrNothing(file))
        settings_.emplace(file, QSettings::IniFormat);
}

bool IniUserDefaults::canBeWritten() const {
    return settings_ && isFileOrNothing(settings_->fileName()) &&
           canBeLocked(settings_->fileName());
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
    if (stored(key) == value)
        return;
    const QString name = QString::fromStdString(key);
    if (!canBeWritten()) {
        unsaved_.insert_or_assign(name, value);
        return;
    }
    unsaved_.erase(name);
    settings_->setValue(name, value);
    // A refusing disk changes only the settings' status; the value holds in memory.
    settings_->sync();
}

void IniUserDefaults::registerFallbacks(const std::map<std::string, std::string>& fallbacks) {
    for (const auto& [key, value] : fallbacks)
        fallbacks_.insert_or_assign(key, value);
}

}  // namespace valdorn
