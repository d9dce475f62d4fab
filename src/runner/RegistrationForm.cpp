#include "runner/RegistrationForm.h"

#include <utility>
#include <variant>

#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"
#include "runner/RunnerManager.h"

namespace valdorn {

std::shared_ptr<RegistrationForm> RegistrationForm::create(MainQueue& queue,
                                                           BackgroundQueue& background) {
    return std::make_shared<RegistrationForm>(Key{}, queue, background);
}

RegistrationForm::RegistrationForm(Key, MainQueue& queue, BackgroundQueue& background)
    : queue_(queue), background_(background) {}

void RegistrationForm::setToken(std::string token) {
    token_.set(std::move(token));
}

bool RegistrationForm::canRegister(const RunnerManager& runner) const {
    return !busy() && !token().empty() && !runner.config().instanceURL.empty() &&
           !runner.config().name.empty();
}

void RegistrationForm::doRegister(const std::shared_ptr<RunnerManager>& runner) {
    // A second click may come before the button knows.
    if (!canRegister(*runner))
        return;
    busy_.set(true);
    message_.set(std::nullopt);
    // The runner lives on the main thread: the background task carries it and gives it back.
    background_.run([&queue = queue_, form = weak_from_this(), carried = runner,
                     registration = runner->registration(token())]() mutable {
        queue.post([form, runner = std::move(carried), outcome = registration.run()]()
                       VALDORN_ON_MAIN_THREAD {
                           if (const auto self = form.lock())
                               self->apply(outcome, *runner);
                       });
    });
}

void RegistrationForm::apply(const RegistrationOutcome& outcome, RunnerManager& runner) {
    busy_.set(false);
    if (const auto* const refused = std::get_if<RunnerError>(&outcome))
        return fail(refused->errorDescription.value_or(std::string()));
    if (const auto* const notLaunched = std::get_if<LaunchError>(&outcome))
        return fail(notLaunched->description());
    ok_.set(true);
    message_.set("Registered ✓");
    token_.set({});
    runner.start();
}

void RegistrationForm::fail(std::string description) {
    ok_.set(false);
    message_.set(std::move(description));
}

}  // namespace valdorn
