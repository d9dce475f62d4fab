#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QIcon>
#include <QList>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "platform/qt/BusStructure.h"
#include "platform/qt/MenuOnBus.h"
#include "platform/qt/NotifierName.h"
#include "platform/qt/TraySurface.h"

namespace valdorn {

// A picture as it travels: four bytes for each pixel, row by row, from alpha to blue.
struct PictureOnBus {
    int width = 0;
    int height = 0;
    QByteArray pixels;
    static constexpr auto fields() {
        return std::tuple(&PictureOnBus::width, &PictureOnBus::height, &PictureOnBus::pixels);
    }
};

struct ToolTipOnBus {
    QString iconName;
    QList<PictureOnBus> icon;
    QString title;
    QString text;
    static constexpr auto fields() {
        return std::tuple(&ToolTipOnBus::iconName, &ToolTipOnBus::icon, &ToolTipOnBus::title,
                          &ToolTipOnBus::text);
    }
};

// The status item for notifier hosts: the interface org.kde.StatusNotifierItem and the menu, on a
// connection that the caller chooses. Qt's own item lives on a connection that does not come back
// with the bus, and only if there was a host when Qt first looked.
//
// It registers with whoever knows the hosts, and anew each time when that is another. It never waits
// for the bus and starts no service; without a bus nothing happens. One per connection, which it may
// outlive. Main thread only.
class NotifierItem : public QObject, public TraySurface {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER category_ CONSTANT)
    Q_PROPERTY(QString Id MEMBER id_ CONSTANT)
    Q_PROPERTY(QString Title MEMBER title_ CONSTANT)
    Q_PROPERTY(QString Status MEMBER status_ CONSTANT)
    Q_PROPERTY(int WindowId MEMBER noWindow_ CONSTANT)
    Q_PROPERTY(QString IconThemePath MEMBER noName_ CONSTANT)
    Q_PROPERTY(QString IconName MEMBER noName_ CONSTANT)
    Q_PROPERTY(QList<valdorn::PictureOnBus> IconPixmap READ pictures)
    Q_PROPERTY(QString OverlayIconName MEMBER noName_ CONSTANT)
    Q_PROPERTY(QList<valdorn::PictureOnBus> OverlayIconPixmap MEMBER noPictures_ CONSTANT)
    Q_PROPERTY(QString AttentionIconName MEMBER noName_ CONSTANT)
    Q_PROPERTY(QList<valdorn::PictureOnBus> AttentionIconPixmap MEMBER noPictures_ CONSTANT)
    Q_PROPERTY(QString AttentionMovieName MEMBER noName_ CONSTANT)
    Q_PROPERTY(valdorn::ToolTipOnBus ToolTip MEMBER toolTip_ CONSTANT)
    Q_PROPERTY(bool ItemIsMenu MEMBER itemIsMenu_ CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu MEMBER menuPath_ CONSTANT)

public:
    // Called with the leave to raise a window that a host has got from a click.
    using OnActivationToken = std::function<void(const std::string& token)>;

    // The name is one on that bus. Where the bus has answered already, the item registers at once.
    NotifierItem(QDBusConnection bus, std::unique_ptr<NotifierName> name, Content content,
                 OnActivationToken onActivationToken);

    // Leaves the hosts.
    ~NotifierItem() override;

    void setIcon(const QIcon& icon) override;

public Q_SLOTS:
    // Clicks with each button; those that show the menu come from hosts that cannot.
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);
    void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    void NewIcon();
    // The rest never changes.
    void NewTitle();
    void NewToolTip();
    void NewStatus(const QString& status);
    void NewAttentionIcon();
    void NewOverlayIcon();

private:
    const QList<PictureOnBus>& pictures();
    void onNamed();
    void enrol();

    const QString category_ = QStringLiteral("ApplicationStatus");
    const QString id_ = QStringLiteral("valdorn");
    const QString title_ = QStringLiteral("Valdorn");
    const QString status_ = QStringLiteral("Active");
    const ToolTipOnBus toolTip_{{}, {}, title_, {}};
    const int noWindow_ = 0;
    const QString noName_;
    const QList<PictureOnBus> noPictures_;
    const bool itemIsMenu_ = true;  // a primary click is to show the menu, too
    const QDBusObjectPath menuPath_{QStringLiteral("/MenuBar")};

    QDBusConnection bus_;
    std::unique_ptr<NotifierName> name_;
    const Content content_;
    const OnActivationToken onActivationToken_;
    QIcon icon_;
    std::optional<QList<PictureOnBus>> pictures_;  // of icon_, once somebody has asked for them
    QDBusServiceWatcher watchers_;
    MenuOnBus menu_;
};

}  // namespace valdorn
