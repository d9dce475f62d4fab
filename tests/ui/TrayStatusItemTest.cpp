#include <QApplication>
#include <QDBusArgument>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QtEndian>
#include <map>

#include <gtest/gtest.h>

#include "contracts/StatusItemContract.h"
#include "platform/qt/NotifierItem.h"
#include "platform/qt/TrayStatusItem.h"
#include "support/VirtualMainQueue.h"
#include "ui/BusCaller.h"
#include "ui/EventLoop.h"
#include "ui/PrivateBus.h"
#include "ui/TrayDrawing.h"

namespace valdorn {
namespace {

using namespace std::chrono_literals;

// What the bar has been told.
struct Bar {
    std::vector<QIcon> icons;
    const MenuModel* menu = nullptr;
    std::function<void()> openMenu;
    std::vector<TrayHost> surfaces;  // what each was made for
    int standing = 0;                // of them
};

class RecordingSurface : public TraySurface {
public:
    RecordingSurface(Bar& bar, TrayHost host, const Content& content) : bar_(bar) {
        bar.icons.push_back(content.icon);
        bar.menu = &content.menu;
        bar.openMenu = content.onOpenMenu;
        bar.surfaces.push_back(host);
        EXPECT_EQ(bar.standing++, 0);
    }
    ~RecordingSurface() override { --bar_.standing; }
    void setIcon(const QIcon& icon) override { bar_.icons.push_back(icon); }

private:
    Bar& bar_;
};

// Pictures that can be told apart by what they were drawn for: each is one pixel of its own colour.
class ToldPictures {
public:
    struct Picture {
        std::optional<StatusIcon> icon;
        std::optional<int> spinnerLength;
    };

    TrayPictures pictures() {
        return {TrayDrawing::spinnerFrames,
                [this](const StatusIcon& icon) {
                    return draw({icon, std::nullopt});
                },
                [this](int, int length) {
                    return draw({std::nullopt, length});
                },
                [this] { return draw({}); }};
    }

    const Picture& of(QRgb pixel) const { return drawn_.at(pixel & RGB_MASK); }

private:
    QIcon draw(const Picture& picture) {
        const QRgb colour = static_cast<QRgb>(drawn_.size()) + 1;
        drawn_[colour] = picture;
        QImage pixel(1, 1, QImage::Format_ARGB32);
        pixel.fill(QColor::fromRgb(colour));
        return QIcon(QPixmap::fromImage(pixel));
    }

    std::map<QRgb, Picture> drawn_;
};

// The item as it is told to a surface.
class ToldBar {
public:
    StatusItem& item() { return item_; }
    void showBar() { item_.show(TrayHost::notifier); }
    std::optional<StatusIcon> icon() { return shown().icon; }
    std::optional<int> spinnerLength() { return shown().spinnerLength; }
    int changesSent() {
        queue_.runPosted();
        return static_cast<int>(bar_.icons.size()) - 1;  // without what the bar started with
    }
    std::vector<std::string> menuTitles() const {
        std::vector<std::string> titles;
        for (const MenuItem& entry : bar_.menu->items())
            titles.push_back(entry.title);
        return titles;
    }
    void choose(std::size_t entry) const { bar_.menu->activate(bar_.menu->items().at(entry).id); }

private:
    ToldPictures::Picture shown() {
        queue_.runPosted();
        return pictures_.of(bar_.icons.back().pixmap(1, 1).toImage().pixel(0, 0));
    }

    VirtualMainQueue queue_;
    Bar bar_;
    ToldPictures pictures_;
    TrayStatusItem item_{queue_, pictures_.pictures(),
                         [this](TrayHost host, const TraySurface::Content& content) {
                             return std::make_unique<RecordingSurface>(bar_, host, content);
                         }};
};

// The item as a host sees it on the bus.
class BarOnBus {
public:
    StatusItem& item() { return item_; }
    void showBar() {
        item_.show(TrayHost::notifier);
        shown();
    }
    std::optional<StatusIcon> icon() { return shown().icon; }
    std::optional<int> spinnerLength() { return shown().spinnerLength; }
    int changesSent() {
        queue_.runPosted();
        return caller_.count(QStringLiteral("NewIcon"));
    }
    std::vector<std::string> menuTitles() {
        const QDBusMessage group =
            menu_.call("GetGroupProperties", {QVariant::fromValue(QList<int>()), QStringList()});
        std::vector<std::string> titles;
        for (const auto& entry : qdbus_cast<QList<MenuEntryOnBus>>(group.arguments().value(0))) {
            if (entry.id > 0)
                titles.push_back(
                    entry.properties.value(QStringLiteral("label")).toString().toStdString());
        }
        return titles;
    }
    void choose(std::size_t entry) {
        menu_.call("Event", {static_cast<int>(entry) + 1, QStringLiteral("clicked"),
                             QVariant::fromValue(QDBusVariant(0)), 0U});
        runReadyEvents();
    }

private:
    ToldPictures::Picture shown() {
        queue_.runPosted();
        const auto seen =
            qdbus_cast<QList<PictureOnBus>>(caller_.property(QStringLiteral("IconPixmap")));
        return pictures_.of(qFromBigEndian<QRgb>(seen.value(0).pixels.constData()));
    }

    VirtualMainQueue queue_;
    PrivateBus bus_;
    QDBusConnection connection_ = bus_.connect();
    ToldPictures pictures_;
    TrayStatusItem item_{
        queue_, pictures_.pictures(), [this](TrayHost, const TraySurface::Content& content) {
            return std::make_unique<NotifierItem>(connection_,
                                                  std::make_unique<NotifierName>(connection_),
                                                  content, [](const std::string&) {});
        }};
    BusCaller caller_{bus_, connection_.baseService(), QStringLiteral("/StatusNotifierItem"),
                      QStringLiteral("org.kde.StatusNotifierItem")};
    BusCaller menu_{bus_, connection_.baseService(), QStringLiteral("/MenuBar"),
                    QStringLiteral("com.canonical.dbusmenu")};
};

using Bars = testing::Types<ToldBar, BarOnBus>;
INSTANTIATE_TYPED_TEST_SUITE_P(Tray, StatusItemContract, Bars);

QImage picture(const QIcon& icon) {
    return icon.pixmap(QSize(48, 48)).toImage().convertToFormat(QImage::Format_ARGB32);
}

int vividness(const QColor& color) {
    return color.saturation() * color.value();
}

// The most vivid colour in the picture; its rim is darker.
QColor mainColor(const QIcon& icon) {
    const QImage image = picture(icon);
    QColor strongest(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() == 255 && vividness(color) > vividness(strongest))
                strongest = color;
        }
    }
    return strongest;
}

bool isEmpty(const QIcon& icon) {
    QImage nothing(48, 48, QImage::Format_ARGB32);
    nothing.fill(Qt::transparent);
    return picture(icon) == nothing;
}

class TrayStatusItemTest : public testing::Test {
protected:
    std::size_t sent() {
        queue.runPosted();
        return bar.icons.size();
    }

    const StatusIcon green{"bird.fill", SystemColor::green, "Valdorn"};
    const StatusIcon red{"bird", SystemColor::red, "Valdorn"};

    int framesDrawn = 0;
    const TrayPictures pictures{TrayDrawing::spinnerFrames, TrayDrawing::icon,
                                [this](int frame, int length) {
                                    ++framesDrawn;
                                    return TrayDrawing::spinner(frame, length);
                                },
                                TrayDrawing::empty};
    VirtualMainQueue queue;
    Bar bar;
    std::string activated;
    MenuModel model{
        {{"status", "Status: —", false, false, false, 0, nullptr},
         {"", "", true, false, true, 0, nullptr},
         {"quit", "Quit Valdorn", true, false, false, 'q', [this] { activated += "quit "; }}}};
    TrayStatusItem item{queue, pictures,
                        [this](TrayHost host, const TraySurface::Content& content) {
                            return std::make_unique<RecordingSurface>(bar, host, content);
                        }};
};

TEST_F(TrayStatusItemTest, NoSurfaceIsMadeAndNothingIsArmedBeforeAHostIsThere) {
    item.setMenu(model);
    item.setIcon(green);
    item.startSpinner();
    item.setLength(24);
    EXPECT_TRUE(bar.surfaces.empty());
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(TrayStatusItemTest, IconIsDrawnInItsColour) {
    item.setIcon(green);
    item.show(TrayHost::notifier);
    ASSERT_EQ(sent(), 1U);
    EXPECT_EQ(mainColor(bar.icons[0]), QColor(0x30, 0xD1, 0x58));
}

TEST_F(TrayStatusItemTest, ItemIsMadeOnlyOnce) {
    item.show(TrayHost::notifier);
    item.show(TrayHost::notifier);
    EXPECT_EQ(bar.surfaces.size(), 1U);
}

TEST_F(TrayStatusItemTest, EmptyPlaceIsTransparent) {
    item.show(TrayHost::notifier);
    EXPECT_TRUE(isEmpty(bar.icons.at(0)));
}

TEST_F(TrayStatusItemTest, PicturesAreSentInTheUsualSizesOnly) {
    item.setIcon(green);
    item.show(TrayHost::notifier);
    QList<QSize> sizes = bar.icons.at(0).availableSizes();
    std::sort(sizes.begin(), sizes.end(), [](QSize a, QSize b) { return a.width() < b.width(); });
    EXPECT_EQ(sizes, (QList<QSize>{{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}}));
}

TEST_F(TrayStatusItemTest, OnlyTheLastIconOfATurnIsSent) {
    item.setIcon(green);
    item.show(TrayHost::notifier);
    item.setIcon(red);
    item.setIcon(green);
    EXPECT_EQ(sent(), 1U);
    item.clearIcon();
    item.setIcon(red);
    EXPECT_EQ(sent(), 2U);
    EXPECT_EQ(mainColor(bar.icons[1]), QColor(0xFF, 0x45, 0x3A));
}

TEST_F(TrayStatusItemTest, SpinnerReplacesTheIconAndTurnsFiveTimesASecond) {
    item.setIcon(green);
    item.show(TrayHost::notifier);
    item.clearIcon();
    item.startSpinner();
    item.setLength(24);
    EXPECT_EQ(sent(), 2U);
    queue.advance(1s);
    EXPECT_EQ(sent(), 7U);
    EXPECT_TRUE(item.isSpinning());
    EXPECT_NE(picture(bar.icons[5]), picture(bar.icons[6]));
}

TEST_F(TrayStatusItemTest, SpinnerComesRoundAfterEightPositions) {
    item.show(TrayHost::notifier);
    item.startSpinner();
    sent();
    queue.advance(1600ms);
    ASSERT_EQ(sent(), 10U);
    EXPECT_EQ(picture(bar.icons[1]), picture(bar.icons[9]));
}

TEST_F(TrayStatusItemTest, SpinnerFillsSixteenPointsOfTheItemsWidth) {
    item.show(TrayHost::notifier);
    item.startSpinner();
    item.setLength(24);
    sent();
    const QImage drawn = picture(bar.icons[1]);
    int left = drawn.width();
    int right = -1;
    for (int x = 0; x < drawn.width(); ++x) {
        for (int y = 0; y < drawn.height(); ++y) {
            if (drawn.pixelColor(x, y).alpha() == 0)
                continue;
            left = std::min(left, x);
            right = std::max(right, x);
        }
    }
    EXPECT_NEAR(left, 8, 1);
    EXPECT_NEAR(right, 39, 1);
}

TEST_F(TrayStatusItemTest, StartingASpinnerThatTurnsChangesNothing) {
    item.show(TrayHost::notifier);
    item.startSpinner();
    queue.advance(300ms);
    item.startSpinner();
    queue.advance(100ms);
    EXPECT_EQ(sent(), 4U);
}

TEST_F(TrayStatusItemTest, NothingIsArmedOnceTheSpinnerHasStopped) {
    item.show(TrayHost::notifier);
    item.startSpinner();
    queue.advance(1s);
    item.stopSpinner();
    item.setIcon(green);
    sent();
    EXPECT_FALSE(item.isSpinning());
    EXPECT_EQ(queue.pending(), 0U);
}

TEST_F(TrayStatusItemTest, SpinnerStartedBeforeTheHostTurnsWhenItIsThere) {
    item.startSpinner();
    item.show(TrayHost::notifier);
    queue.advance(200ms);
    EXPECT_EQ(sent(), 2U);
}

TEST_F(TrayStatusItemTest, FromSpinnerToIconIsOneChange) {
    item.show(TrayHost::notifier);
    item.clearIcon();
    item.startSpinner();
    item.setLength(24);
    const std::size_t before = sent();
    item.stopSpinner();
    item.setLength(StatusItem::variableLength);
    item.setIcon(green);
    EXPECT_EQ(sent(), before + 1);
}

TEST_F(TrayStatusItemTest, ItemOnABusThatHasGoneIsMadeAnew) {
    item.setMenu(model);
    item.setIcon(green);
    item.show(TrayHost::notifier);
    item.loseBus();
    item.setIcon(red);
    EXPECT_EQ(sent(), 1U);
    item.show(TrayHost::notifier);
    EXPECT_EQ(bar.surfaces.size(), 2U);
    EXPECT_EQ(mainColor(bar.icons[1]), QColor(0xFF, 0x45, 0x3A));
    EXPECT_EQ(bar.menu, &model);
}

TEST_F(TrayStatusItemTest, NothingIsArmedWhileTheBusIsGone) {
    item.show(TrayHost::notifier);
    item.startSpinner();
    item.loseBus();
    EXPECT_EQ(queue.pending(), 0U);
    item.show(TrayHost::notifier);
    queue.advance(200ms);
    EXPECT_EQ(sent(), 3U);
}

TEST_F(TrayStatusItemTest, ItemInAnXembedTrayNeedsNoBus) {
    item.show(TrayHost::xembed);
    item.loseBus();
    item.setIcon(red);
    EXPECT_EQ(sent(), 2U);
    EXPECT_EQ(bar.surfaces.size(), 1U);
}

TEST_F(TrayStatusItemTest, ItemMovesToAnotherKindOfHost) {
    item.setMenu(model);
    item.show(TrayHost::notifier);
    item.show(TrayHost::xembed);
    item.show(TrayHost::xembed);
    item.setIcon(red);
    sent();
    EXPECT_EQ(bar.surfaces, (std::vector{TrayHost::notifier, TrayHost::xembed}));
    EXPECT_EQ(mainColor(bar.icons.back()), QColor(0xFF, 0x45, 0x3A));
    item.loseBus();
    EXPECT_EQ(bar.standing, 1);
}

TEST_F(TrayStatusItemTest, EachFrameIsDrawnOnceWhileTheSpinnerTurns) {
    const auto turn = [this] {
        item.startSpinner();
        queue.advance(10s);
        item.stopSpinner();
        queue.runPosted();
        return framesDrawn;
    };
    item.show(TrayHost::notifier);
    EXPECT_EQ(turn(), TrayDrawing::spinnerFrames);
    EXPECT_EQ(turn(), 2 * TrayDrawing::spinnerFrames);
}

TEST_F(TrayStatusItemTest, PrimaryClickOpensTheMenuAtThePointer) {
    item.setMenu(model);
    item.show(TrayHost::notifier);
    bar.openMenu();
    auto* const open = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(open, nullptr);
    EXPECT_EQ(open->actions().size(), 3);
    open->actions().last()->trigger();
    open->close();
    EXPECT_EQ(activated, "quit ");
}

TEST_F(TrayStatusItemTest, ClickWithoutAMenuDoesNothing) {
    item.show(TrayHost::notifier);
    bar.openMenu();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

}  // namespace
}  // namespace valdorn
