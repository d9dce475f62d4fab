#include "simulation/ModelForm.h"

#include "simulation/Marks.h"
#include "simulation/ModelText.h"

namespace valdorn::simulation {

namespace {

std::string messageOf(const ToolScript& script) {
    std::string output;
    for (const std::string& chunk : script.chunks)
        output += chunk;
    if (!ModelText::isUtf8(output)) {
        reached<"registration with broken output">();
        return "act_runner register failed (exit " + std::to_string(script.exitNumber) + ")";
    }
    if (output.empty())
        reached<"registration refused in silence">();
    auto lines = ModelText::lines(output);
    std::erase(lines, "");
    return lines.empty() ? output : lines.back();
}

}  // namespace

template <typename Value>
void ModelForm::set(Value FormView::*field, const std::type_identity_t<Value>& value) {
    machine_.announcements.emplace_back(view_);
    view_.*field = value;
}

void ModelForm::setToken(const std::string& token) {
    set(&FormView::token, token);
}

bool ModelForm::canRegister(const ModelRunner& runner) const {
    const RunnerConfig& config = runner.view().config;
    return !view_.isBusy && !view_.token.empty() && !config.instanceURL.empty() &&
           !config.name.empty();
}

ToolCall ModelForm::callFor(const ModelRunner& runner) const {
    const RunnerConfig& config = runner.view().config;
    return {
        machine_.executable(),
        {"register", "--no-interactive", "--instance", config.instanceURL, "--token", view_.token,
         "--name", config.name, "--labels", config.labels.empty() ? "macos" : config.labels},
        runner.dataFolder(),
        machine_.environment};
}

std::function<void(const ToolScript&)> ModelForm::beginRegistration(
    const std::shared_ptr<ModelRunner>& runner) {
    if (!canRegister(*runner))
        return {};
    set(&FormView::isBusy, true);
    set(&FormView::message, std::nullopt);
    machine_.disk.makeFolders(runner->dataFolder());
    return [this, runner, call = callFor(*runner)](const ToolScript& script) {
        run(runner, call, script);
    };
}

void ModelForm::run(const std::shared_ptr<ModelRunner>& runner, const ToolCall& call,
                    const ToolScript& script) {
    calls.push_back(call);
    if (script.writesMarker && !script.launchFailure) {
        machine_.disk.plantFolder(call.folder);
        machine_.disk.plantFile(call.folder + "/.runner", "");
    }
    machine_.loop.post([this, runner, script] {
        if (script.launchFailure)
            return reached<"registration tool not launched">(), fail(*script.launchFailure);
        if (script.exitNumber != 0)
            return reached<"registration refused">(), fail(messageOf(script));
        succeed(*runner);
    });
}

void ModelForm::succeed(ModelRunner& runner) {
    set(&FormView::isBusy, false);
    set(&FormView::isOk, true);
    set(&FormView::message, "Registered ✓");
    set(&FormView::token, "");
    if (runner.isRegistered())
        reached<"registered">();
    else
        reached<"registered without a marker">();
    runner.start();
}

void ModelForm::fail(const std::string& description) {
    set(&FormView::isBusy, false);
    set(&FormView::isOk, false);
    set(&FormView::message, description);
}

}  // namespace valdorn::simulation
