#include "ui/log/LogViewerView.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHideEvent>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "platform/Pasteboard.h"
#include "platform/Workspace.h"
#include "ui/PromptField.h"
#include "ui/log/LogRowsView.h"

namespace valdorn {

namespace {

constexpr int marginPoints = 10;
constexpr int rowSpacingPoints = 8;
constexpr int controlSpacingPoints = 10;
constexpr QSize minimumPoints{660, 400};
constexpr int widestFilterPoints = 220;
constexpr int levelPickerPoints = 110;

QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

LogViewerView::LogViewerView(LogViewerEnvironment environment, std::unique_ptr<LogViewer> viewer,
                             QWidget* parent)
    : QWidget(parent),
      environment_(std::move(environment)),
      viewer_(std::move(viewer)),
      rows_(new LogRowsView(environment_.queue, environment_.pasteboard)) {
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(marginPoints, marginPoints, marginPoints, marginPoints);
    stack->setSpacing(rowSpacingPoints);
    auto* const bar = new QHBoxLayout;
    bar->setSpacing(controlSpacingPoints);
    addFilter(*bar);
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

QSize LogViewerView::minimumSizeHint() const {
    return QWidget::minimumSizeHint().expandedTo(minimumPoints);
}

void LogViewerView::addFilter(QHBoxLayout& bar) {
    auto* const filter = new PromptField(QStringLiteral("Filter"));
    filter->setObjectName(QStringLiteral("logFilter"));
    filter->setClearButtonEnabled(true);
    filter->setMaximumWidth(widestFilterPoints);
    connect(filter, &QLineEdit::textChanged, this,
            [this](const QString& text) { viewer_->setQuery(text.toStdString()); });
    bar.addWidget(filter, 1);
    auto* const finding = new QAction(this);
    finding->setShortcut(QKeySequence::Find);
    connect(finding, &QAction::triggered, filter, [filter] {
        filter->setFocus(Qt::ShortcutFocusReason);
        filter->selectAll();
    });
    addAction(finding);

    auto* const level = new QComboBox;
    level->setObjectName(QStringLiteral("logLevel"));
    level->setAccessibleName(QStringLiteral("Level"));
    for (const LevelFilter each : levelFilters)
        level->addItem(fromUtf8(rawValue(each)));
    level->setFixedWidth(std::max(levelPickerPoints, level->sizeHint().width()));
    connect(level, &QComboBox::currentIndexChanged, this, [this](int index) {
        viewer_->setLevel(levelFilters.at(static_cast<std::size_t>(index)));
    });
    bar.addWidget(level);
    // On Linux a screen reader takes a picker's name from its label, seen or not.
    auto* const label = new QLabel(QStringLiteral("Level"), this);
    label->setBuddy(level);
    label->hide();

    auto* const follow = new QCheckBox(QStringLiteral("Follow"));
    follow->setObjectName(QStringLiteral("logFollow"));
    follow->setChecked(viewer_->follow());
    connect(follow, &QCheckBox::toggled, this, [this](bool on) { viewer_->setFollow(on); });
    bar.addWidget(follow);
}

void LogViewerView::addButtons(QHBoxLayout& bar) {
    const auto add = [this, &bar](const char* title, const char* name, auto action) {
        auto* const button = new QPushButton(QString::fromLatin1(title));
        button->setObjectName(QString::fromLatin1(name));
        button->setAutoDefault(false);
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

void LogViewerView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        viewer_->start();
}

void LogViewerView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        viewer_->stop();
}

}  // namespace valdorn
