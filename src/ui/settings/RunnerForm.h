#pragma once

#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/DeferredUpdate.h"
#include "platform/Observable.h"
#include "platform/ThreadAnnotations.h"
#include "runner/RunnerConfig.h"

class QLineEdit;
class QPushButton;

namespace valdorn {

class Announcer;
class FormSection;
class MainQueue;
class RegistrationForm;
class RunnerManager;
class Spinner;
class WrappedLabel;

// The rows in which one runner's record is edited and the runner registered. Each keystroke is the
// record: nothing is checked, trimmed or kept back. Thread: main thread only.
class RunnerForm : public QWidget {
    Q_OBJECT

public:
    // The registration serves other runners, too. The queue outlives this.
    RunnerForm(std::shared_ptr<RunnerManager> runner,
               std::shared_ptr<RegistrationForm> registration, MainQueue& queue);
    ~RunnerForm() override;

    const std::shared_ptr<RunnerManager>& runner() const { return runner_; }

    // Where the keyboard leaves the form.
    QWidget& lastControl() const;

    // Shows what is so now. Done after each change of the runner or the registration.
    void refresh() VALDORN_ON_MAIN_THREAD;

private:
    // A text field and the text of the record that it is.
    struct Field {
        QLineEdit* edit;
        std::string RunnerConfig::*text;
    };

    // How the registration goes.
    struct Progress {
        bool isBusy = false;
        std::optional<std::string> message;

        friend bool operator==(const Progress&, const Progress&) = default;
    };

    QWidget* makeRecordSection();
    QWidget* makeRegistrationSection();
    void addTokenField(FormSection& section);
    void addActions(FormSection& section);
    void store(const Field& field) VALDORN_ON_MAIN_THREAD;
    void doRegister() VALDORN_ON_MAIN_THREAD;
    void refreshFields() VALDORN_ON_MAIN_THREAD;
    void refreshActions() VALDORN_ON_MAIN_THREAD;
    void refreshMessage() VALDORN_ON_MAIN_THREAD;
    void announce() VALDORN_ON_MAIN_THREAD;

    const std::shared_ptr<RunnerManager> runner_;
    const std::shared_ptr<RegistrationForm> registration_;
    std::vector<Field> fields_;
    Announcer* const announcer_;
    QLineEdit* const token_;
    QPushButton* const button_;
    Spinner* const spinner_;
    WrappedLabel* const message_;
    Progress progress_;  // as it was shown last
    DeferredUpdate update_;
    Subscription runnerChanges_;
    Subscription registrationChanges_;
};

}  // namespace valdorn
