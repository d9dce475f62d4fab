#include "ui/log/LogViewerView.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/Pasteboard.h"
#include "platform/Workspace.h"
#include "ui/CheckBox.h"
#include "ui/PlainText.h"
#include "ui/PromptField.h"
#include "ui/StrongFrame.h"
#include "ui/log/LogRowsView.h"

namespace valdorn {

namespace {

constexpr int margin = 10;
constexpr int rowSpacing = 8;
constexpr int controlSpacing = 10;
constexpr QSize leastSize{660, 400};
constexpr int widestFilter = 220;
constexpr int levelPicker = 110;

// As wide as it is meant to be, and wider where the desktop's font needs it.
class LevelPicker : public QComboBox {
public:
    LevelPicker() {
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        new StrongFrame(*this);
    }
    QSize sizeHint() const override {
        return QComboBox::sizeHint().expandedTo(QSize(levelPicker, 0));
    }
    QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace

LogViewerView::LogViewerView(LogViewerEnvironment environment, std::unique_ptr<LogViewer> viewer)
    : WindowView(leastSize),
      environment_(std::move(environment)),
      viewer_(std::move(viewer)),
      rows_(new LogRowsView(environment_.queue, environment_.pasteboard)) {
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(margin, margin, margin, margin);
    stack->setSpacing(rowSpacing);
    auto* const bar = new QHBoxLayout;
    bar->setSpacing(controlSpacing);
    addFilter(*bar);
    addLevel(*bar);
    addFollow(*bar);
    bar->addStretch();
    addButtons(*bar);
    stack->addLayout(bar);
    rows_->setObjectName(QStringLiteral("logRows"));
    rows_->setAccessibleName(QStringLiteral("Log"));
    stack->addWidget(rows_, 1);
    subscription_ = viewer_->onFilteredChanged(
        [this](LogViewer::Scrolling scrolling) { showFiltered(scrolling); });
}

LogViewerView::~LogViewerView() = default;

void LogViewerView::addFilter(QHBoxLayout& bar) {
    auto* const filter = new PromptField(QStringLiteral("Filter"));
    filter->setObjectName(QStringLiteral("logFilter"));
    filter->setAccessibleName(filter->placeholderText());
    filter->setClearButtonEnabled(true);
    filter->findChild<QToolButton*>()->setAccessibleName(QStringLiteral("Clear Filter"));
    filter->setMaximumWidth(widestFilter);
    connect(filter, &QLineEdit::textChanged, this,
            [this](const QString& text) { viewer_->setQuery(text.toStdString()); });
    bar.addWidget(filter, 1);
    auto* const clearing = new QAction(filter);
    clearing->setShortcut(Qt::Key_Escape);
    clearing->setShortcutContext(Qt::WidgetShortcut);
    connect(clearing, &QAction::triggered, filter, &QLineEdit::clear);
    filter->addAction(clearing);
    auto* const finding = new QAction(this);
    finding->setShortcut(QKeySequence::Find);
    connect(finding, &QAction::triggered, filter, [filter] {
        filter->setFocus(Qt::ShortcutFocusReason);
        filter->selectAll();
    });
    addAction(finding);
}

void LogViewerView::addLevel(QHBoxLayout& bar) {
    auto* const level = new LevelPicker;
    level->setObjectName(QStringLiteral("logLevel"));
    level->setAccessibleName(QStringLiteral("Level"));
    for (const LevelFilter each : levelFilters)
        level->addItem(PlainText::fromUtf8(rawValue(each)));
    connect(level, &QComboBox::currentIndexChanged, this, [this](int index) {
        viewer_->setLevel(levelFilters.at(static_cast<std::size_t>(index)));
    });
    bar.addWidget(level);
    // On Linux a screen reader takes a picker's name from its label, seen or not.
    auto* const label = new QLabel(QStringLiteral("Level"), this);
    label->setBuddy(level);
    label->hide();
}

void LogViewerView::addFollow(QHBoxLayout& bar) {
    auto* const follow = new CheckBox(QStringLiteral("Follow"));
    follow->setObjectName(QStringLiteral("logFollow"));
    follow->setChecked(viewer_->follow());
    rows_->setKeepsEnd(viewer_->follow());
    connect(follow, &QCheckBox::toggled, this, [this](bool on) {
        viewer_->setFollow(on);
        rows_->setKeepsEnd(on);
    });
    bar.addWidget(follow);
}

void LogViewerView::addButtons(QHBoxLayout& bar) {
    const auto add = [this, &bar](const char* title, const char* name, auto action) {
        auto* const button = new QPushButton(QString::fromLatin1(title));
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
        new StrongFrame(*button);
        connect(button, &QPushButton::clicked, this, action);
        bar.addWidget(button);
    };
    add("Copy", "logCopy", [this] { environment_.pasteboard.setText(viewer_->text()); });
    add("Clear", "logClear", [this] { viewer_->clear(); });
    // A log that is not there is the other program's to complain about.
    add("Open File", "logOpenFile",
        [this] { environment_.workspace.openFile(environment_.logPath()); });
}

void LogViewerView::showFiltered(LogViewer::Scrolling scrolling) {
    rows_->setLines(viewer_->filtered());
    if (scrolling == LogViewer::Scrolling::toLast)
        rows_->scrollToLast();
}

void LogViewerView::appeared() {
    viewer_->start();
}

void LogViewerView::vanished() {
    viewer_->stop();
}

}  // namespace valdorn
