#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <optional>

#include <gtest/gtest.h>

#include "platform/qt/NotifierItem.h"
#include "ui/BusCaller.h"
#include "ui/EventLoop.h"
#include "ui/NotifierHost.h"
#include "ui/PrivateBus.h"
#include "ui/TrayDrawing.h"

namespace valdorn {
namespace {

QIcon square(int pixels, const QColor& color) {
    QImage image(pixels, pixels, QImage::Format_ARGB32);
    image.fill(color);
    return QIcon(QPixmap::fromImage(image));
}

class NotifierItemTest : public testing::Test {
protected:
    std::unique_ptr<NotifierItem> makeItem(const QDBusConnection& on) {
        return makeItem(on, std::make_unique<NotifierName>(on));
    }

    std::unique_ptr<NotifierItem> makeItem(const QDBusConnection& on,
                                           std::unique_ptr<NotifierName> name) {
        return std::make_unique<NotifierItem>(
            on, std::move(name),
            TraySurface::Content{square(1, Qt::white), model, [this] { log += "open "; }},
            [this](const std::string& token) { log += token + " "; });
    }

    BusCaller callerOf(const QString& service) { return {bus, service, itemPath, interface}; }

    bool sees(const NotifierHost& host, int registrations) {
        return runUntil([&] { return host.registered.size() >= registrations; }) &&
               host.registered.size() == registrations;
    }

    QList<PictureOnBus> pictures() {
        return qdbus_cast<QList<PictureOnBus>>(caller.property(QStringLiteral("IconPixmap")));
    }

    bool isOwned(const QString& name) {
        BusCaller daemon(bus, QStringLiteral("org.freedesktop.DBus"),
                         QStringLiteral("/org/freedesktop/DBus"),
                         QStringLiteral("org.freedesktop.DBus"));
        return daemon.call("NameHasOwner", {name}).arguments().value(0).toBool();
    }

    static inline const QString itemPath = QStringLiteral("/StatusNotifierItem");
    static inline const QString interface = QStringLiteral("org.kde.StatusNotifierItem");
    PrivateBus bus;
    std::string log;
    MenuModel model{{{"quit", "Quit", true, false, false, 0, [this] { log += "quit "; }}}};
    QDBusConnection connection = bus.connect();
    std::unique_ptr<NotifierItem> item = makeItem(connection);
    BusCaller caller = {bus, connection.baseService(), itemPath, interface};
};

// But for its name as an object, which Qt lets everybody change and nobody reads.
TEST_F(NotifierItemTest, NobodyElseChangesIt) {
    const QVariantMap before = caller.properties();
    ASSERT_GT(before.size(), 10);
    for (const QString& name : before.keys()) {
        EXPECT_EQ(caller.setProperty(name, QStringLiteral("x")).type(), QDBusMessage::ErrorMessage)
            << name.toStdString();
    }
    for (const char* const method : {"deleteLater", "setIcon", "onNamed", "NewIcon", "Quit"})
        EXPECT_EQ(caller.call(method).type(), QDBusMessage::ErrorMessage) << method;
    EXPECT_EQ(caller.properties().keys(), before.keys());
    EXPECT_EQ(caller.property(QStringLiteral("Title")).toString(), QStringLiteral("Valdorn"));
    EXPECT_EQ(log, "");
}

TEST_F(NotifierItemTest, DescribesItself) {
    const QVariantMap all = caller.properties();
    const auto text = [&all](const char* name) {
        return all.value(QLatin1String(name)).toString().toStdString();
    };
    EXPECT_EQ(text("Category"), "ApplicationStatus");
    EXPECT_EQ(text("Id"), "Valdorn");
    EXPECT_EQ(text("Title"), "Valdorn");
    EXPECT_EQ(text("Status"), "Active");
    EXPECT_EQ(all.value(QStringLiteral("WindowId")), QVariant(0));
    EXPECT_EQ(all.value(QStringLiteral("ItemIsMenu")), QVariant(true));
    EXPECT_EQ(all.value(QStringLiteral("Menu")).value<QDBusObjectPath>().path(),
              QStringLiteral("/MenuBar"));
    for (const char* const name : {"IconName", "IconThemePath", "OverlayIconName",
                                   "AttentionIconName", "AttentionMovieName"}) {
        EXPECT_TRUE(all.contains(QLatin1String(name))) << name;
        EXPECT_EQ(text(name), "") << name;
    }
    for (const char* const name : {"OverlayIconPixmap", "AttentionIconPixmap"})
        EXPECT_TRUE(qdbus_cast<QList<PictureOnBus>>(all.value(QLatin1String(name))).isEmpty());
    const auto toolTip = qdbus_cast<ToolTipOnBus>(all.value(QStringLiteral("ToolTip")));
    EXPECT_EQ(toolTip.title, QStringLiteral("Valdorn"));
    EXPECT_EQ(toolTip.text + toolTip.iconName, QString());
}

TEST_F(NotifierItemTest, TellsHowItIsMade) {
    const QString xml = caller.introspection();
    for (const char* const part :
         {"\"org.kde.StatusNotifierItem\"", "\"a(iiay)\"", "\"(sa(iiay)ss)\"", "\"Activate\"",
          "\"SecondaryActivate\"", "\"ContextMenu\"", "\"Scroll\"", "\"ProvideXdgActivationToken\"",
          "\"NewIcon\"", "\"NewTitle\"", "\"NewToolTip\"", "\"NewStatus\"", "\"NewAttentionIcon\"",
          "\"NewOverlayIcon\""})
        EXPECT_TRUE(xml.contains(QLatin1String(part))) << part << xml.toStdString();
}

TEST_F(NotifierItemTest, PicturesTravelAsPixelsFromAlphaToBlue) {
    QImage half(2, 1, QImage::Format_ARGB32);
    half.setPixel(0, 0, qRgba(0xFF, 0x00, 0xFF, 0x80));
    half.setPixel(1, 0, qRgba(1, 2, 3, 255));
    item->setIcon(QIcon(QPixmap::fromImage(half)));
    const QList<PictureOnBus> seen = pictures();
    ASSERT_EQ(seen.size(), 1);
    EXPECT_EQ(seen[0].width, 2);
    EXPECT_EQ(seen[0].height, 1);
    EXPECT_EQ(seen[0].pixels.toHex(), QByteArray("80ff00ffff010203"));
}

TEST_F(NotifierItemTest, EachChangeOfTheIconIsOneSignal) {
    EXPECT_EQ(caller.signalsSoFar().size(), 0U);
    item->setIcon(square(3, Qt::red));
    EXPECT_EQ(pictures().value(0).width, 3);
    EXPECT_EQ(pictures().value(0).width, 3);
    item->setIcon(square(4, Qt::red));
    EXPECT_EQ(pictures().value(0).width, 4);
    EXPECT_EQ(caller.signalsSoFar().size(), 2U);
    EXPECT_EQ(caller.count(QStringLiteral("NewIcon")), 2);
}

TEST_F(NotifierItemTest, FrameOfTheSpinnerIsSmall) {
    constexpr int limit = 16 * 1024;
    item->setIcon(TrayDrawing::spinner(0, 24));
    int bytes = 0;
    for (const PictureOnBus& picture : pictures())
        bytes += static_cast<int>(picture.pixels.size());
    EXPECT_GT(bytes, 0);
    EXPECT_LE(bytes, limit);
}

TEST_F(NotifierItemTest, ClicksOpenTheMenuWhereTheHostShowsNone) {
    EXPECT_EQ(caller.call("Activate", {10, 10}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(log, "open ");
    EXPECT_EQ(caller.call("ContextMenu", {10, 10}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(log, "open open ");
    EXPECT_EQ(caller.call("SecondaryActivate", {10, 10}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(caller.call("Scroll", {1, QStringLiteral("vertical")}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(log, "open open ");
}

TEST_F(NotifierItemTest, TokenOfAClickIsHandedOn) {
    EXPECT_EQ(caller.call("ProvideXdgActivationToken", {QStringLiteral("token-1")}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(log, "token-1 ");
}

TEST_F(NotifierItemTest, MalformedCallsAreRefused) {
    for (const QDBusMessage& answer :
         {caller.call("Activate", {}), caller.call("Activate", {QStringLiteral("x"), 1}),
          caller.call("ProvideXdgActivationToken", {1}), caller.call("Dance")})
        EXPECT_EQ(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    EXPECT_EQ(log, "");
}

TEST_F(NotifierItemTest, MenuIsWhereTheItemSays) {
    BusCaller menu(bus, connection.baseService(),
                   caller.property(QStringLiteral("Menu")).value<QDBusObjectPath>().path(),
                   QStringLiteral("com.canonical.dbusmenu"));
    menu.call("Event",
              {1, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
    runReadyEvents();
    EXPECT_EQ(log, "quit ");
}

TEST_F(NotifierItemTest, RegistersUnderANameOfItsOwn) {
    caller.signalsSoFar();
    const NotifierHost host(bus);
    ASSERT_TRUE(sees(host, 1));
    const QString name = host.registered[0];
    EXPECT_TRUE(name.startsWith(
        QStringLiteral("org.kde.StatusNotifierItem-%1-").arg(QCoreApplication::applicationPid())));
    BusCaller byName = callerOf(name);
    EXPECT_EQ(byName.property(QStringLiteral("Id")).toString(), QStringLiteral("Valdorn"));
}

TEST_F(NotifierItemTest, RegistersAtOnceWithAHostThatIsThere) {
    caller.signalsSoFar();
    const NotifierHost host(bus);
    const QDBusConnection another = bus.connect();
    const auto second = makeItem(another);
    EXPECT_TRUE(runUntil([&host] { return host.registered.size() == 2; }));
    EXPECT_NE(host.registered.value(0), host.registered.value(1));
}

TEST_F(NotifierItemTest, RegistersWithinItsMakingUnderANameThatIsKnown) {
    const NotifierHost host(bus);
    ASSERT_TRUE(sees(host, 1));
    const QDBusConnection another = bus.connect();
    auto name = std::make_unique<NotifierName>(another);
    EXPECT_TRUE(name->known().isEmpty());
    ASSERT_TRUE(runUntil([&name] { return !name->known().isEmpty(); }));
    const QString known = name->known();
    EXPECT_TRUE(isOwned(known));
    const auto second = makeItem(another, std::move(name));
    EXPECT_EQ(host.registered.size(), 1);
    EXPECT_TRUE(sees(host, 2));
    EXPECT_EQ(host.registered.value(1), known);
}

TEST_F(NotifierItemTest, NameThatNoItemHasTakenIsGivenBack) {
    auto name = std::make_unique<NotifierName>(connection);
    ASSERT_TRUE(runUntil([&name] { return !name->known().isEmpty(); }));
    const QString known = name->known();
    name.reset();
    EXPECT_FALSE(isOwned(known));
}

TEST_F(NotifierItemTest, RegistersWithEachHostThatComes) {
    caller.signalsSoFar();
    for (int round = 0; round < 3; ++round) {
        const NotifierHost host(bus);
        EXPECT_TRUE(sees(host, 1));
    }
}

TEST_F(NotifierItemTest, RegistersWithAHostThatTakesOverFromAnother) {
    caller.signalsSoFar();
    std::optional<NotifierHost> first(std::in_place, bus);
    const NotifierHost next(bus, true);
    EXPECT_TRUE(sees(*first, 1));
    first.reset();
    EXPECT_TRUE(sees(next, 1));
}

TEST_F(NotifierItemTest, TakesTheNameOfTheConnectionWhereItsOwnIsTaken) {
    caller.signalsSoFar();
    QString own;
    {
        const NotifierHost host(bus);
        ASSERT_TRUE(sees(host, 1));
        own = host.registered[0];
    }
    const int number = own.section(QLatin1Char('-'), -1).toInt();
    const QString next =
        own.section(QLatin1Char('-'), 0, -2) + QStringLiteral("-%1").arg(number + 1);
    ASSERT_TRUE(bus.connect().registerService(next));
    item.reset();
    const NotifierHost host(bus);
    const QDBusConnection another = bus.connect();
    const auto second = makeItem(another);
    ASSERT_TRUE(sees(host, 1));
    EXPECT_EQ(host.registered[0], another.baseService());
    EXPECT_EQ(callerOf(host.registered[0]).property(QStringLiteral("Id")).toString(),
              QStringLiteral("Valdorn"));
}

TEST_F(NotifierItemTest, LeavesTheBusCleanly) {
    caller.signalsSoFar();
    const NotifierHost host(bus);
    ASSERT_TRUE(sees(host, 1));
    EXPECT_TRUE(isOwned(host.registered[0]));
    item.reset();
    EXPECT_FALSE(isOwned(host.registered[0]));
    EXPECT_EQ(caller.call("Activate", {1, 1}).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.UnknownObject"));
    item = makeItem(connection);
    EXPECT_TRUE(sees(host, 2));
    EXPECT_EQ(caller.property(QStringLiteral("Id")).toString(), QStringLiteral("Valdorn"));
}

TEST_F(NotifierItemTest, MayGoBeforeTheBusHasAnswered) {
    item = nullptr;
    for (int round = 0; round < 5; ++round)
        makeItem(connection);
    const NotifierHost host(bus);
    item = makeItem(connection);
    EXPECT_TRUE(sees(host, 1));
}

TEST_F(NotifierItemTest, OutlivesItsBusAndIsMadeAnewOnTheNext) {
    bus.end();
    EXPECT_TRUE(runUntil([this] { return !connection.isConnected(); }));
    item->setIcon(square(2, Qt::red));
    item.reset();
    bus.begin();
    const QDBusConnection next = bus.connect();
    item = makeItem(next);
    const NotifierHost host(bus);
    ASSERT_TRUE(sees(host, 1));
    EXPECT_EQ(callerOf(host.registered[0]).property(QStringLiteral("Id")).toString(),
              QStringLiteral("Valdorn"));
}

TEST(NotifierItemWithoutBusTest, DoesNothing) {
    MenuModel model{{}};
    const QDBusConnection none(QStringLiteral("no such bus"));
    NotifierItem item(none, std::make_unique<NotifierName>(none),
                      {square(1, Qt::red), model, [] {}}, [](const std::string&) {});
    item.setIcon(square(1, Qt::white));
    runReadyEvents();
}

}  // namespace
}  // namespace valdorn
