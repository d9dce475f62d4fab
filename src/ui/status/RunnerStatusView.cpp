#include "ui/status/RunnerStatusView.h"

#include <QShowEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "fleet/RunnersStore.h"
#include "ui/AccessibleRole.h"
#include "ui/Announcer.h"
#include "ui/StyledLabel.h"
#include "ui/VerticalScrollArea.h"
#include "ui/status/RunnerRow.h"
#include "update/UpdateChecker.h"

namespace valdorn {

namespace {

constexpr int padding = 16;
constexpr int spacing = 12;
constexpr QSize leastSize(460, 200);

}  // namespace

RunnerStatusView::RunnerStatusView(std::shared_ptr<RunnersStore> store, MainQueue& queue,
                                   std::unique_ptr<UpdateChecker> updates)
    : WindowView(leastSize),
      store_(std::move(store)),
      queue_(queue),
      updates_(std::move(updates)),
      announcer_(new Announcer(*this, queue)),
      heading_(new StyledLabel(TextStyle::title3, std::nullopt, QFont::Bold)),
      rowArea_(new QWidget),
      rowStack_(new QVBoxLayout(rowArea_)),
      scrolling_(new VerticalScrollArea(makeContent())),
      update_(queue, [this]() VALDORN_ON_MAIN_THREAD { refresh(); }),
      listChanges_(store_->onWillChange([this] { update_.request(); })),
      updateChanges_(updates_->onWillChange([this] { update_.request(); })) {
    setObjectName(QStringLiteral("runnerStatusView"));
    AccessibleRole::set(*scrolling_, QAccessible::Grouping);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(scrolling_);
    refresh();
}

RunnerStatusView::~RunnerStatusView() = default;

QWidget* RunnerStatusView::makeContent() {
    heading_->setObjectName(QStringLiteral("heading"));
    AccessibleRole::set(*heading_, QAccessible::Heading);
    auto* const footnote = new StyledLabel(TextStyle::caption, SystemColor::secondary);
    footnote->setObjectName(QStringLiteral("footnote"));
    footnote->setText(QStringLiteral("Add or remove runners in Settings → Runners."));
    footnote->setWordWrap(true);
    rowStack_->setContentsMargins(0, 0, 0, 0);
    rowStack_->setSpacing(spacing);
    auto* const content = new QWidget;
    auto* const stack = new QVBoxLayout(content);
    stack->setContentsMargins(padding, padding, padding, padding);
    stack->setSpacing(spacing);
    stack->addWidget(heading_);
    stack->addWidget(rowArea_);
    stack->addWidget(footnote);
    stack->addStretch();
    return content;
}

void RunnerStatusView::refresh() {
    const bool isOne = store_->runners().size() == 1;
    const QString heading = isOne ? QStringLiteral("Runner") : QStringLiteral("Runners");
    if (heading_->text() != heading) {
        heading_->setText(heading);
        scrolling_->setAccessibleName(heading);  // said when the keyboard is at none of them
    }
    hints_.setLatest(updates_->latest());
    updateRows();
    for (RunnerRow* const row : rows_)
        row->refresh();
}

void RunnerStatusView::updateRows() {
    std::vector<RunnerRow*> rows;
    rows.reserve(store_->runners().size());
    for (const auto& runner : store_->runners())
        rows.push_back(takeRow(runner));
    std::swap(rows_, rows);
    for (RunnerRow* const gone : rows) {
        if (!gone)
            continue;
        gone->hide();  // the keyboard goes on to a neighbour
        delete gone;
    }
    placeRows();
    rowArea_->setVisible(!rows_.empty());
}

// The runner's row out of the present ones, or a new one.
RunnerRow* RunnerStatusView::takeRow(const std::shared_ptr<RunnerManager>& runner) {
    const auto found = std::find_if(
        rows_.begin(), rows_.end(), [&runner](const RunnerRow* row) VALDORN_ON_MAIN_THREAD {
            return row && row->runner() == runner && row->id() == runner->id();
        });
    if (found != rows_.end())
        return std::exchange(*found, nullptr);
    auto* const row = new RunnerRow(runner, queue_, hints_, *announcer_);
    row->setSeen(isSeen_);
    return row;
}

// Each row at its place, in which the keyboard walks them, too.
void RunnerStatusView::placeRows() {
    QWidget* previous = nullptr;
    for (int index = 0; index < static_cast<int>(rows_.size()); ++index) {
        RunnerRow* const row = rows_[static_cast<std::size_t>(index)];
        if (rowStack_->indexOf(row) != index)
            rowStack_->insertWidget(index, row);
        if (previous)
            setTabOrder(previous, &row->button());
        previous = &row->button();
    }
}

void RunnerStatusView::setSeen(bool seen) {
    isSeen_ = seen;
    for (RunnerRow* const row : rows_)
        row->setSeen(seen);
}

void RunnerStatusView::appeared() {
    updates_->check();
    // Otherwise the first button would have the keyboard, and a stray blank would stop a runner.
    if (!focusWidget())
        scrolling_->setFocus();
}

// Uptimes stop while the window is minimised, too.
void RunnerStatusView::showEvent(QShowEvent* event) {
    WindowView::showEvent(event);
    setSeen(true);
}

void RunnerStatusView::hideEvent(QHideEvent* event) {
    WindowView::hideEvent(event);
    setSeen(false);
}

}  // namespace valdorn
