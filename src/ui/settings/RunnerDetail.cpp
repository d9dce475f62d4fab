#include "ui/settings/RunnerDetail.h"

#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "runner/RegistrationForm.h"
#include "runner/RunnerManager.h"
#include "ui/VerticalScrollArea.h"
#include "ui/settings/RunnerForm.h"

namespace valdorn {

namespace {

constexpr int padding = 14;

}  // namespace

RunnerDetail::RunnerDetail(std::shared_ptr<RunnerManager> runner,
                           std::shared_ptr<RegistrationForm> registration, MainQueue& queue,
                           int leastWidth)
    : registration_(std::move(registration)),
      queue_(queue),
      leastWidth_(leastWidth),
      content_(new QWidget),
      scrolling_(new VerticalScrollArea(content_)) {
    auto* const stack = new QVBoxLayout(content_);
    stack->setContentsMargins(padding, padding, padding, padding);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(scrolling_);
    makeForm(std::move(runner));
}

RunnerDetail::~RunnerDetail() = default;

void RunnerDetail::makeForm(std::shared_ptr<RunnerManager> runner) {
    form_ = new RunnerForm(std::move(runner), registration_, queue_);
    content_->layout()->addWidget(form_);
}

void RunnerDetail::setRunner(std::shared_ptr<RunnerManager> runner) {
    if (runner == form_->runner())
        return;
    delete form_;
    makeForm(std::move(runner));
}

// As high as the rows, so that the window grows with the font before anything has to scroll.
QSize RunnerDetail::minimumSizeHint() const {
    const int width = std::max(scrolling_->minimumSizeHint().width(), leastWidth_);
    // A bar that has come up goes only when the rows would fit beside it.
    const int bar = scrolling_->verticalScrollBar()->sizeHint().width();
    return {width, content_->layout()->totalHeightForWidth(width - bar)};
}

}  // namespace valdorn
