#include "ui/settings/RunnerForm.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <limits>
#include <utility>

#include "runner/RegistrationForm.h"
#include "runner/RunnerManager.h"
#include "ui/Announcer.h"
#include "ui/PlainText.h"
#include "ui/PromptField.h"
#include "ui/Spinner.h"
#include "ui/StrongFrame.h"
#include "ui/StyledLabel.h"
#include "ui/WrappedLabel.h"
#include "ui/settings/FormSection.h"

namespace valdorn {

namespace {

constexpr int sectionSpacing = 12;
constexpr int actionSpacing = 10;
constexpr int messageLines = 3;

struct FieldDescription {
    const char* title;
    const char* name;
    std::string RunnerConfig::*text;
    const char* placeholder;
};

constexpr FieldDescription recordFields[] = {
    {"Gitea URL", "instanceURL", &RunnerConfig::instanceURL, "http://host:3000"},
    {"Name", "name", &RunnerConfig::name, ""},
    {"Labels", "labels", &RunnerConfig::labels, "macos,arm64"},
    {"Extra PATH", "extraPath", &RunnerConfig::extraPath, "optional, colon-separated"},
};
constexpr char tokenTitle[] = "Registration token";

QStringList titles() {
    QStringList titles{QLatin1String(tokenTitle)};
    for (const FieldDescription& field : recordFields)
        titles += QLatin1String(field.title);
    return titles;
}

// Qt cuts off what is longer than a field's limit.
constexpr int noLimit = std::numeric_limits<int>::max();

// A text that is there already stays as it is, with its cursor, its selection and its history.
void fill(QLineEdit& edit, const std::string& text) {
    if (edit.text().toStdString() != text)
        edit.setText(PlainText::fromUtf8(text));
}

}  // namespace

RunnerForm::RunnerForm(std::shared_ptr<RunnerManager> runner,
                       std::shared_ptr<RegistrationForm> registration, MainQueue& queue)
    : runner_(std::move(runner)),
      registration_(std::move(registration)),
      announcer_(new Announcer(*this, queue)),
      token_(new PromptField({})),
      button_(new QPushButton),
      spinner_(new Spinner(queue)),
      message_(new WrappedLabel(TextStyle::caption, messageLines)),
      update_(queue, [this]() VALDORN_ON_MAIN_THREAD { refresh(); }),
      runnerChanges_(runner_->onWillChange([this] { update_.request(); })),
      registrationChanges_(registration_->onWillChange([this] { update_.request(); })) {
    setObjectName(QStringLiteral("runnerForm"));
    auto* const stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(sectionSpacing);
    stack->addWidget(makeRecordSection());
    stack->addWidget(makeRegistrationSection());
    stack->addStretch();
    refresh();
}

RunnerForm::~RunnerForm() = default;

QWidget& RunnerForm::lastControl() const {
    return *button_;
}

QWidget* RunnerForm::makeRecordSection() {
    auto* const section = new FormSection(QStringLiteral("Runner"), titles());
    for (const FieldDescription& description : recordFields) {
        const Field field{new PromptField(QLatin1String(description.placeholder)),
                          description.text};
        field.edit->setObjectName(QLatin1String(description.name));
        field.edit->setMaxLength(noLimit);
        fill(*field.edit, runner_->config().*field.text);
        field.edit->setCursorPosition(0);
        // Whoever changes it: a screen reader's or an input method's edits are edits, too.
        connect(field.edit, &QLineEdit::textChanged, this, [this, field] { store(field); });
        section->addField(QLatin1String(description.title), field.edit);
        fields_.push_back(field);
    }
    return section;
}

QWidget* RunnerForm::makeRegistrationSection() {
    auto* const section = new FormSection(QStringLiteral("Register"), titles());
    addTokenField(*section);
    auto* const help = new StyledLabel(TextStyle::caption, SystemColor::secondary);
    help->setObjectName(QStringLiteral("help"));
    help->setText(QStringLiteral(
        "Token: <gitea>/-/admin/actions/runners (or an org/repo → Settings → Runners)."));
    help->setWordWrap(true);
    section->addRow(help);
    addActions(*section);
    return section;
}

void RunnerForm::addTokenField(FormSection& section) {
    token_->setObjectName(QStringLiteral("token"));
    token_->setEchoMode(QLineEdit::Password);
    token_->setMaxLength(noLimit);
    fill(*token_, registration_->token());
    connect(token_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.toStdString() != registration_->token())
            registration_->setToken(text.toStdString());
    });
    section.addField(QLatin1String(tokenTitle), token_);
}

void RunnerForm::addActions(FormSection& section) {
    button_->setObjectName(QStringLiteral("register"));
    new StrongFrame(*button_);
    button_->setAutoDefault(true);  // Return presses it, as Space does
    connect(button_, &QPushButton::clicked, this, &RunnerForm::doRegister);
    spinner_->setObjectName(QStringLiteral("spinner"));
    spinner_->setAccessibleName(QStringLiteral("Registering"));
    message_->setObjectName(QStringLiteral("message"));
    auto* const row = new QWidget;
    auto* const actions = new QHBoxLayout(row);
    actions->setContentsMargins(0, 0, 0, 0);
    actions->setSpacing(actionSpacing);
    actions->addWidget(button_, 0, Qt::AlignVCenter);
    actions->addWidget(spinner_, 0, Qt::AlignVCenter);
    actions->addWidget(message_, 1);
    actions->addStretch();
    section.addRow(row);
}

void RunnerForm::store(const Field& field) {
    RunnerConfig config = runner_->config();
    config.*field.text = field.edit->text().toStdString();
    if (config != runner_->config())
        runner_->setConfig(std::move(config));
}

// The button is about to be disabled: without a word from us the keyboard would go to whatever
// control comes next. The token is selected, so that a better one takes its place.
void RunnerForm::doRegister() {
    if (button_->hasFocus())
        token_->setFocus(Qt::TabFocusReason);
    registration_->doRegister(runner_);
    refresh();  // at once: the next click may be on its way
}

void RunnerForm::refresh() {
    refreshFields();
    refreshActions();
    refreshMessage();
    announce();
}

void RunnerForm::refreshFields() {
    for (const Field& field : fields_)
        fill(*field.edit, runner_->config().*field.text);
    fill(*token_, registration_->token());
}

void RunnerForm::refreshActions() {
    button_->setText(runner_->isRegistered() ? QStringLiteral("Re-register")
                                             : QStringLiteral("Register"));
    button_->setEnabled(registration_->canRegister(*runner_));
    spinner_->setVisible(registration_->busy());
}

void RunnerForm::refreshMessage() {
    const auto& message = registration_->message();
    message_->setColor(registration_->ok() ? SystemColor::green : SystemColor::red);
    if (message)
        message_->setText(PlainText::fromUtf8(*message));
    message_->setVisible(message.has_value());
}

// How it goes, once each. What stood there when the rows were made is no news: they cannot be seen
// then.
void RunnerForm::announce() {
    const Progress now{registration_->busy(), registration_->message()};
    if (std::exchange(progress_, now) == now)
        return;
    if (now.message)
        announcer_->say(*message_, PlainText::oneLine(message_->text()));
    else if (now.isBusy)
        announcer_->say(*message_, spinner_->accessibleName());
}

}  // namespace valdorn
