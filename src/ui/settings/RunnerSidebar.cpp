#include "ui/settings/RunnerSidebar.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "fleet/RunnerSelection.h"
#include "ui/Divider.h"
#include "ui/SymbolButton.h"
#include "ui/settings/RunnerList.h"

namespace valdorn {

namespace {

// Names of that length are shown whole.
constexpr int readableCharacters = 16;
constexpr int besideNames = 40;  // the symbol and what is around both, in points

constexpr int barPadding = 6;
constexpr int barSpacing = 4;

}  // namespace

RunnerSidebar::RunnerSidebar(std::shared_ptr<RunnerSelection> selection)
    : selection_(std::move(selection)),
      list_(new RunnerList),
      add_(new SymbolButton),
      remove_(new SymbolButton) {
    setObjectName(QStringLiteral("runnerSidebar"));
    updateWidth();
    list_->setObjectName(QStringLiteral("runnerList"));
    list_->setAccessibleName(QStringLiteral("Runners"));
    connect(list_, &RunnerList::chosen, this, [this](const std::optional<std::string>& id) {
        selection_->select(id);
        changed();
    });
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(0);
    stack->addWidget(list_, 1);
    stack->addWidget(new Divider(Qt::Horizontal));
    stack->addWidget(makeButtonBar());
}

RunnerSidebar::~RunnerSidebar() = default;

void RunnerSidebar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateWidth();
}

void RunnerSidebar::updateWidth() {
    const int names = readableCharacters * fontMetrics().averageCharWidth();
    setFixedWidth(std::max(usualWidth, names + besideNames));
}

QWidget* RunnerSidebar::makeButtonBar() {
    add_->setObjectName(QStringLiteral("addRunner"));
    add_->setSymbol(QStringLiteral("plus"), std::nullopt, QStringLiteral("Add a runner"));
    connect(add_, &SymbolButton::clicked, this, [this] {
        selection_->add();
        changed();
    });
    remove_->setObjectName(QStringLiteral("removeRunner"));
    remove_->setSymbol(QStringLiteral("minus"), std::nullopt,
                       QStringLiteral("Remove the selected runner"));
    connect(remove_, &SymbolButton::clicked, this, [this] {
        selection_->removeSelected();
        changed();
    });
    auto* const bar = new QWidget;
    auto* const buttons = new QHBoxLayout(bar);
    buttons->setContentsMargins(barPadding, barPadding, barPadding, barPadding);
    buttons->setSpacing(barSpacing);
    buttons->addWidget(add_);
    buttons->addWidget(remove_);
    buttons->addStretch();
    return bar;
}

void RunnerSidebar::refresh() {
    std::vector<RunnerList::Entry> entries;
    for (const auto& runner : selection_->store()->runners())
        entries.push_back({runner->id(), displayName(runner->config())});
    list_->setEntries(entries, selection_->selectedID());
    const bool canRemove = selection_->canRemove();
    // Otherwise the keyboard would go on to the next control, which is in the form.
    if (!canRemove && remove_->hasFocus())
        list_->setFocus();
    remove_->setEnabled(canRemove);
}

}  // namespace valdorn
