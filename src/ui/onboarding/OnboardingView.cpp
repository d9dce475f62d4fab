#include "ui/onboarding/OnboardingView.h"

#include <QAction>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <utility>

#include "fleet/RunnersStore.h"
#include "platform/Workspace.h"
#include "runner/RunnerManager.h"
#include "ui/AccessibleRole.h"
#include "ui/Announcer.h"
#include "ui/Divider.h"
#include "ui/PlainText.h"
#include "ui/StatusColor.h"
#include "ui/StatusDot.h"
#include "ui/StyledLabel.h"
#include "ui/onboarding/RowButton.h"

namespace valdorn {

namespace {

constexpr int padding = 20;
constexpr int spacing = 14;
constexpr int rowSpacing = 8;
constexpr QSize contentSize(460, 300);

QString noteFor(RunnerStatus status) {
    switch (status) {
        case RunnerStatus::connected:
        case RunnerStatus::building:
            return QStringLiteral("Local network access is working — you're all set.");
        case RunnerStatus::noNetwork:
            return QStringLiteral(
                "The runner can't reach Gitea over the local network. If you dismissed the “find "
                "devices on your local network” prompt, re-enable Valdorn in Local Network "
                "settings.");
        case RunnerStatus::notRegistered:
        case RunnerStatus::stopped:
        case RunnerStatus::starting:
            break;
    }
    return QStringLiteral(
        "On first connect, macOS asks to let Valdorn find devices on your local network — choose "
        "Allow.");
}

QString settingsTitleFor(const RunnersStore& store) VALDORN_ON_MAIN_THREAD {
    return store.first()->isRegistered() ? QStringLiteral("Runner Settings…")
                                         : QStringLiteral("Register a Runner…");
}

template <typename Widget>
Widget* named(const char* name, Widget* widget) {
    widget->setObjectName(QLatin1String(name));
    return widget;
}

StyledLabel* wrapping(StyledLabel* label) {
    label->setWordWrap(true);
    return label;
}

}  // namespace

OnboardingView::OnboardingView(OnboardingEnvironment environment)
    : WindowView(contentSize),
      environment_(std::move(environment)),
      announcer_(new Announcer(*this, environment_.queue)),
      title_(named("title", new StyledLabel(TextStyle::title2, std::nullopt, QFont::Bold))),
      explanation_(
          named("explanation", wrapping(new StyledLabel(TextStyle::body, SystemColor::secondary)))),
      dot_(named("statusDot", new StatusDot)),
      status_(named("status", new StyledLabel(TextStyle::callout))),
      note_(named("note", wrapping(new StyledLabel(TextStyle::callout, SystemColor::secondary)))),
      networkButton_(named("openNetworkSettings",
                           new RowButton(QStringLiteral("Open Local Network Settings…")))),
      settingsButton_(named("runnerSettings", new RowButton)),
      continueButton_(named("continue", new RowButton(QStringLiteral("Continue")))),
      update_(environment_.queue, [this]() VALDORN_ON_MAIN_THREAD { refresh(); }),
      changes_(environment_.runner->onWillChange([this] { update_.request(); })) {
    setObjectName(QStringLiteral("onboardingView"));
    AccessibleRole::set(*this, QAccessible::Grouping);
    AccessibleRole::set(*title_, QAccessible::Heading);
    title_->setText(QStringLiteral("Welcome to Valdorn"));
    explanation_->setText(QStringLiteral(
        "Valdorn runs a Gitea CI runner as a child process, so it inherits this app's macOS Local "
        "Network permission. That's the workaround for Sequoia's Local Network Privacy: a "
        "launchd-spawned runner can't get the grant, but a signed app — and its children — can."));
    setAccessibleName(title_->text());
    layOut();
    connectButtons();
    refresh();
}

OnboardingView::~OnboardingView() = default;

void OnboardingView::layOut() {
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(padding, padding, padding, padding);
    stack->setSpacing(spacing);
    stack->addWidget(title_);
    stack->addWidget(explanation_);
    stack->addWidget(new Divider(Qt::Horizontal));
    stack->addLayout(makeStatusRow());
    stack->addWidget(note_);
    stack->addStretch();
    stack->addLayout(makeButtonRow());
}

QLayout* OnboardingView::makeStatusRow() {
    auto* const row = new QHBoxLayout;
    row->setSpacing(rowSpacing);
    row->addWidget(dot_, 0, Qt::AlignVCenter);
    row->addWidget(status_, 1);
    return row;
}

QLayout* OnboardingView::makeButtonRow() {
    auto* const row = new QHBoxLayout;
    row->setSpacing(rowSpacing);
    for (RowButton* const button : {networkButton_, settingsButton_, continueButton_})
        row->addWidget(button);
    row->addStretch();
    return row;
}

// Outside of Qt's dialogues a default button is one by its looks alone; and on some desktops Return
// presses the button that has the keyboard.
void OnboardingView::connectButtons() {
    connect(networkButton_, &RowButton::clicked, this,
            [this] { environment_.workspace.openUrl(localNetworkSettings); });
    connect(settingsButton_, &RowButton::clicked, this, [this] { environment_.onRegister(); });
    connect(continueButton_, &RowButton::clicked, this, [this] { environment_.onClose(); });
    continueButton_->setDefault(true);
    auto* const continuing = new QAction(this);
    continuing->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    continuing->setAutoRepeat(false);
    connect(continuing, &QAction::triggered, continueButton_, &RowButton::click);
    addAction(continuing);
}

// What stays the same is not set again: that would be news to a screen reader.
void OnboardingView::refresh() {
    settingsButton_->setText(settingsTitleFor(*environment_.store));
    const RunnerStatus status = environment_.runner->status();
    if (std::exchange(shown_, status) == status)
        return;
    const QString title = PlainText::fromUtf8(rawValue(status));
    dot_->setStatus(statusColor(status), title);
    status_->setText(QStringLiteral("Status: ") + title);
    if (const QString note = noteFor(status); note_->text() != note)
        note_->setText(note);
    setAccessibleDescription(status_->text() + QStringLiteral(". ") + note_->text());
    announcer_->say(*status_, accessibleDescription());
}

QSize OnboardingView::minimumSizeHint() const {
    const QSize least = WindowView::minimumSizeHint();
    return least.expandedTo({0, layout()->totalMinimumHeightForWidth(least.width())});
}

void OnboardingView::appeared() {
    continueButton_->setFocus();
}

}  // namespace valdorn
