#include "ui/status/RunnerRow.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QMargins>
#include <QStringList>
#include <QStyle>
#include <QVBoxLayout>
#include <QWidgetItem>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <ratio>

#include "runner/RunnerManager.h"
#include "ui/Announcer.h"
#include "ui/ElidedLabel.h"
#include "ui/StatusDot.h"
#include "ui/SymbolButton.h"
#include "ui/TabularLabel.h"

namespace valdorn {

namespace {

// Uptimes go on at tenths of a second of the clock, so that rows whose runners were launched
// together, as at the start of the program, cost one wake-up and one painting a second instead of
// one each: with three rows 3 context switches instead of 6.
using Tick = std::chrono::duration<std::int64_t, std::deci>;

constexpr int padding = 6;
constexpr int spacing = 10;
constexpr int lineSpacing = 4;
constexpr int partSpacing = 6;
constexpr int aboveDot = 5;  // puts the dot beside the middle of the first line
constexpr int symbolPoints = 22;
constexpr int versionCharacters = 16;  // of a usual one, with large text, too

const std::string& textOf(const std::string& part) {
    return part;
}

const std::string& textOf(const RunnerRowContent::Hint& part) {
    return part.text;
}

// Lays the button out as large as its symbol looks; what it has around that, for the pointer and the
// ring, reaches into the row's padding.
class SymbolItem : public QWidgetItem {
public:
    using QWidgetItem::QWidgetItem;

    QSize sizeHint() const override { return QWidgetItem::sizeHint().shrunkBy(overhang); }
    QSize minimumSize() const override { return QWidgetItem::minimumSize().shrunkBy(overhang); }
    QSize maximumSize() const override { return QWidgetItem::maximumSize().shrunkBy(overhang); }
    void setGeometry(const QRect& place) override {
        widget()->setGeometry(
            QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QWidgetItem::sizeHint(), place));
    }
    QRect geometry() const override { return widget()->geometry().marginsRemoved(overhang); }

private:
    static constexpr QMargins overhang{SymbolButton::margin, SymbolButton::margin + 1,
                                       SymbolButton::margin, SymbolButton::margin + 1};
};

// Shows or hides a part; one that is hidden leaves no gap.
template <typename Label, typename Part>
void applyPart(Label& label, const std::optional<Part>& part) {
    if (part)
        label.setText(QString::fromStdString(textOf(*part)));
    label.setVisible(part.has_value());
}

ElidedLabel* secondary() {
    return new ElidedLabel(TextStyle::callout, SystemColor::secondary);
}

}  // namespace

RunnerRow::RunnerRow(std::shared_ptr<RunnerManager> runner, MainQueue& queue, UpdateHints& hints,
                     Announcer& announcer)
    : runner_(std::move(runner)),
      id_(runner_->id()),
      queue_(queue),
      hints_(hints),
      announcer_(announcer),
      dot_(new StatusDot),
      name_(new ElidedLabel(TextStyle::body, std::nullopt, QFont::DemiBold)),
      button_(new SymbolButton(symbolPoints)),
      status_(secondary()),
      version_(secondary()),
      uptime_(new TabularLabel(TextStyle::callout, SystemColor::secondary)),
      hint_(secondary()),
      build_(new ElidedLabel(TextStyle::callout)),
      dotColumn_(new QVBoxLayout),
      update_(queue, [this]() VALDORN_ON_MAIN_THREAD { refresh(); }),
      changes_(runner_->onWillChange([this] { update_.request(); })) {
    setObjectName(QStringLiteral("runnerRow"));
    dot_->setObjectName(QStringLiteral("statusDot"));
    name_->setObjectName(QStringLiteral("name"));
    button_->setObjectName(QStringLiteral("startStop"));
    status_->setObjectName(QStringLiteral("status"));
    version_->setObjectName(QStringLiteral("version"));
    uptime_->setObjectName(QStringLiteral("uptime"));
    hint_->setObjectName(QStringLiteral("updateHint"));
    build_->setObjectName(QStringLiteral("build"));
    layOut();
    connect(button_, &SymbolButton::clicked, this, &RunnerRow::toggle);
}

RunnerRow::~RunnerRow() = default;

QWidget& RunnerRow::button() const {
    return *button_;
}

void RunnerRow::layOut() {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    // In the order in which a screen reader is to come to them.
    for (QWidget* const part : std::initializer_list<QWidget*>{dot_, name_, status_, version_,
                                                               uptime_, hint_, build_, button_})
        part->setParent(this);
    // The status is one of six short titles: what gives way is what comes from outside.
    status_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    version_->setLeastCharacters(versionCharacters);
    auto* const lines = new QVBoxLayout;
    lines->setSpacing(lineSpacing);
    lines->addLayout(makeNameLine());
    lines->addLayout(makeStatusLine());
    lines->addWidget(hint_);
    lines->addWidget(build_);
    dotColumn_->addWidget(dot_);
    dotColumn_->addStretch();
    alignDot();
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(padding, padding, padding, padding);
    row->setSpacing(spacing);
    row->addLayout(dotColumn_);
    row->addLayout(lines, 1);
}

QLayout* RunnerRow::makeNameLine() {
    auto* const line = new QHBoxLayout;
    line->setSpacing(partSpacing);
    line->addWidget(name_, 0, Qt::AlignVCenter);
    line->addStretch();
    line->addItem(new SymbolItem(button_));
    return line;
}

QLayout* RunnerRow::makeStatusLine() {
    auto* const line = new QHBoxLayout;
    line->setSpacing(partSpacing);
    line->addWidget(status_);
    line->addWidget(version_);
    line->addWidget(uptime_);
    line->addStretch();
    return line;
}

void RunnerRow::toggle() {
    if (runner_->isRunning())
        runner_->stop();
    else
        runner_->start();
}

void RunnerRow::setSeen(bool seen) {
    isSeen_ = seen;
    refresh();
}

void RunnerRow::refresh() {
    apply(RunnerRowContent::of(*runner_, hints_, queue_.now()));
    armTick();
}

void RunnerRow::apply(const RunnerRowContent& content) {
    if (shown_ == content)
        return;
    std::optional<RunnerRowContent> before = std::exchange(shown_, content);
    applyPart(*uptime_, content.uptime);
    if (before)
        before->uptime = content.uptime;
    if (before != shown_)  // more than a second that has passed
        applyWords(before);
}

void RunnerRow::applyWords(const std::optional<RunnerRowContent>& before) {
    if (!before || before->statusText != shown_->statusText)
        dot_->setStatus(shown_->dotColor, QString::fromStdString(shown_->statusText));
    name_->setText(QString::fromStdString(shown_->name));
    status_->setText(QString::fromStdString(shown_->statusText));
    applyPart(*version_, shown_->version);
    if (shown_->updateHint)
        hint_->setColor(shown_->updateHint->color);
    applyPart(*hint_, shown_->updateHint);
    applyPart(*build_, shown_->buildLine);
    if (!before || before->isRunning != shown_->isRunning)
        applyButton();
    describe();
    if (before)
        announce(*before);
}

void RunnerRow::applyButton() {
    if (shown_->isRunning)
        button_->setSymbol(QStringLiteral("stop.circle.fill"), SystemColor::red,
                           QStringLiteral("Stop runner"));
    else
        button_->setSymbol(QStringLiteral("play.circle.fill"), SystemColor::green,
                           QStringLiteral("Start runner"));
}

// The lines as one text, as the labels have them, without the uptime: nobody wants to be told every
// second.
void RunnerRow::describe() {
    setAccessibleName(name_->text());
    QStringList lines{status_->text()};
    if (shown_->version)
        lines.back() += QLatin1Char(' ') + version_->text();
    if (shown_->updateHint)
        lines += hint_->text();
    if (shown_->buildLine)
        lines += build_->text();
    const QString description = lines.join(QLatin1String(", "));
    if (description != accessibleDescription())
        setAccessibleDescription(description);
}

// What somebody waits for: the status, and that there is a newer release.
void RunnerRow::announce(const RunnerRowContent& before) {
    const auto say = [this](const QLabel& label) {
        announcer_.say(label, name_->text() + QLatin1String(": ") + label.text());
    };
    if (before.statusText != shown_->statusText)
        say(*status_);
    const auto& hint = shown_->updateHint;
    if (hint && hint != before.updateHint && hint->isOffer())
        say(*hint_);
}

// A child that ends before it is launched again is not announced: each tick looks at everything.
void RunnerRow::armTick() {
    tick_.cancel();
    if (!isSeen_ || !shown_->uptime)
        return;
    const auto now = queue_.now();
    const auto startedAt = *runner_->startedAt();
    const auto full = std::chrono::floor<std::chrono::seconds>(now - startedAt);
    const auto due = std::chrono::ceil<Tick>(startedAt + full + std::chrono::seconds(1));
    tick_ = queue_.after(std::chrono::ceil<std::chrono::milliseconds>(due - now),
                         [this]() VALDORN_ON_MAIN_THREAD { refresh(); });
}

void RunnerRow::changeEvent(QEvent* event) {
    GroupPanel::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        alignDot();
}

// With large text the first line is higher than the symbol.
void RunnerRow::alignDot() {
    const QFontMetrics firstLine(TextStyles::font(TextStyle::body, QFont::DemiBold));
    const int above = (firstLine.height() - StatusDot::diameter) / 2;
    dotColumn_->setContentsMargins(0, std::max(above, aboveDot), 0, 0);
}

}  // namespace valdorn
