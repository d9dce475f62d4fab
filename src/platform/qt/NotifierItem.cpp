#include "platform/qt/NotifierItem.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QImage>
#include <QPixmap>
#include <QtEndian>
#include <utility>

#include "platform/qt/BusCalls.h"

namespace valdorn {

namespace {

QString itemPath() {
    return QStringLiteral("/StatusNotifierItem");
}

void registerTypes() {
    [[maybe_unused]] static const bool once = [] {
        qDBusRegisterMetaType<PictureOnBus>();
        qDBusRegisterMetaType<QList<PictureOnBus>>();
        qDBusRegisterMetaType<ToolTipOnBus>();
        return true;
    }();
}

PictureOnBus onBus(const QImage& picture) {
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32);
    PictureOnBus result{image.width(), image.height(),
                        QByteArray(image.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(image.constBits(), image.sizeInBytes() / qsizetype{sizeof(quint32)},
                          result.pixels.data());
    return result;
}

QList<PictureOnBus> inEachSize(const QIcon& icon) {
    QList<PictureOnBus> pictures;
    for (const QSize size : icon.availableSizes())
        pictures.append(onBus(icon.pixmap(size, 1.0).toImage()));
    return pictures;
}

}  // namespace

NotifierItem::NotifierItem(QDBusConnection bus, std::unique_ptr<NotifierName> name, Content content,
                           OnActivationToken onActivationToken)
    : bus_(std::move(bus)),
      name_(std::move(name)),
      content_(std::move(content)),
      onActivationToken_(std::move(onActivationToken)),
      icon_(content_.icon),
      menu_(bus_, menuPath_.path(), content_.menu) {
    registerTypes();
    if (!bus_.isConnected())
        return;
    bus_.registerObject(itemPath(), this, QDBusConnection::ExportAllContents);
    if (name_->known().isEmpty())
        connect(name_.get(), &NotifierName::becameKnown, this, [this] { onNamed(); });
    else
        onNamed();
}

NotifierItem::~NotifierItem() {
    name_.reset();  // hosts see by its name that the item goes, and are not to look at the rest
}

void NotifierItem::onNamed() {
    watchers_.setConnection(bus_);
    watchers_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watchers_.addWatchedService(BusCalls::itemWatcher());
    // Also from one watcher straight to the next, which no registration tells of.
    connect(&watchers_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                if (!owner.isEmpty())
                    enrol();
            });
    enrol();
}

// A watcher that refuses or has gone is not asked again: the next one is.
void NotifierItem::enrol() {
    bus_.asyncCall(
        BusCalls::toItemWatcher("org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem")
        << name_->known());
}

void NotifierItem::setIcon(const QIcon& icon) {
    icon_ = icon;
    pictures_.reset();
    Q_EMIT NewIcon();
}

const QList<PictureOnBus>& NotifierItem::pictures() {
    return pictures_ ? *pictures_ : pictures_.emplace(inEachSize(icon_));
}

void NotifierItem::Activate(int, int) {
    content_.onOpenMenu();
}

void NotifierItem::SecondaryActivate(int, int) {}

void NotifierItem::ContextMenu(int, int) {
    content_.onOpenMenu();
}

void NotifierItem::Scroll(int, const QString&) {}

void NotifierItem::ProvideXdgActivationToken(const QString& token) {
    onActivationToken_(token.toStdString());
}

}  // namespace valdorn
