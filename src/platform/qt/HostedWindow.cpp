#include "platform/qt/HostedWindow.h"

#include <QAccessibleWidget>
#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <malloc.h>

#include "platform/MenuModel.h"
#include "platform/qt/MenuRenderer.h"
#include "platform/qt/XlibAnswers.h"

namespace valdorn {

namespace {

QString objectNameOf(WindowKind kind) {
    switch (kind) {
        case WindowKind::settings:
            return QStringLiteral("settingsWindow");
        case WindowKind::log:
            return QStringLiteral("logWindow");
        case WindowKind::status:
            return QStringLiteral("statusWindow");
        case WindowKind::onboarding:
            return QStringLiteral("onboardingWindow");
    }
    return {};
}

// A dialogue-like window has neither a minimise nor a maximise button.
Qt::WindowFlags flagsFor(bool resizable) {
    const Qt::WindowFlags closable = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                     Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    return resizable ? closable | Qt::WindowMinMaxButtonsHint : closable;
}

// Without a token Qt's Wayland client (6.4) asks on behalf of the window that has the focus, and
// crashes when that one has been closed: it may be told of the focus too late. A window that is just
// shown is given the focus all the same.
bool canBeActivated() {
    const QWindow* const focused = QGuiApplication::focusWindow();
    return !focused || focused->handle() || qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN");
}

// Qt (6.4) connects a window that gets the focus with the application, and does not end that for one
// that is closed with the focus. Each time it is shown again would leave one connection more, and
// each of them would tell of every change of focus within.
void endFormerFocus(const QWindow* window) {
    if (window && window != QGuiApplication::focusWindow())
        QObject::disconnect(window, &QWindow::focusObjectChanged, qGuiApp, nullptr);
}

// What a window has taken lies between what stays, and the C library would keep the gaps: some 800 KiB
// after a look at each window.
void giveMemoryBack() {
    malloc_trim(0);
}

// To a screen reader Qt's plain widgets are stuffing, in a window of their own, too: it would not
// read out the title.
QAccessibleInterface* accessibleWindow(const QString&, QObject* object) {
    auto* const window = qobject_cast<HostedWindow*>(object);
    return window ? new QAccessibleWidget(window, QAccessible::Window) : nullptr;
}

}  // namespace

HostedWindow::HostedWindow(const WindowDescription& description, QWidget* view)
    : QWidget(nullptr, flagsFor(description.resizable)),
      described_(description.contentWidthPoints, description.contentHeightPoints),
      resizable_(description.resizable),
      layout_(new QVBoxLayout(this)) {
    QAccessible::installFactory(accessibleWindow);  // once, however often it is asked for
    setObjectName(objectNameOf(description.kind));
    setWindowTitle(QString::fromStdString(description.title));
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(0);
    layout_->addWidget(view);
    auto* const closing = new QAction(this);
    closing->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    connect(closing, &QAction::triggered, this, &QWidget::close);
    addAction(closing);
    // Not before all that goes with the window is gone.
    connect(this, &HostedWindow::hidden, this, giveMemoryBack, Qt::QueuedConnection);
    resizeContent(described_);
    center();
}

HostedWindow::~HostedWindow() = default;

bool HostedWindow::event(QEvent* event) {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest && !resizable_)
        resizeContent(described_);
    if (event->type() == QEvent::Hide)
        Q_EMIT hidden();
    return handled;
}

int HostedWindow::menuBarHeight() const {
    return menuBar_ ? menuBar_->sizeHint().height() : 0;
}

void HostedWindow::resizeContent(QSize content) {
    ensurePolished();
    const QSize size = QSize(content.width(), content.height() + menuBarHeight())
                           .expandedTo(layout_->totalMinimumSize());
    if (resizable_)
        resize(size);
    else
        setFixedSize(size);
}

void HostedWindow::center() {
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    QRect frame(QPoint(), size());
    frame.moveCenter(screen->availableGeometry().center());
    move(frame.topLeft());
}

void HostedWindow::present() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    endFormerFocus(windowHandle());
    show();
    raise();
    if (canBeActivated())
        activateWindow();
    readXlibAnswers();
}

void HostedWindow::setMenu(MenuModel* menu) {
    const QSize content(width(), height() - menuBarHeight());
    menuRenderer_.reset();
    delete menuBar_;
    menuBar_ = nullptr;
    if (menu) {
        menuBar_ = new QMenuBar(this);
        menuBar_->setNativeMenuBar(false);
        menuRenderer_ =
            std::make_unique<MenuRenderer>(*menu, *menuBar_->addMenu(QStringLiteral("Valdorn")));
        layout_->setMenuBar(menuBar_);
        menuBar_->show();
    }
    resizeContent(resizable_ ? content : described_);
}

}  // namespace valdorn
