#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulation/ModelRunner.h"

namespace valdorn::simulation {

// What the registration tool does in one run: known when it is scripted.
struct ToolScript {
    std::vector<std::string> chunks;
    int exitNumber = 0;
    std::optional<std::string> launchFailure;  // the description, when it cannot be launched
    bool writesMarker = false;
};

// How the tool was called.
struct ToolCall {
    std::string executable;
    std::vector<std::string> arguments;
    std::string folder;
    std::vector<std::string> environment;

    friend bool operator==(const ToolCall&, const ToolCall&) = default;
};

// The registration form by the rules.
class ModelForm {
public:
    explicit ModelForm(ModelMachine& machine) : machine_(machine) {}

    std::string token;
    bool busy = false;
    bool ok = false;
    std::optional<std::string> message;

    bool canRegister(const ModelRunner& runner) const;

    // The tool's run, to be played on the background queue; nothing when the form does nothing. The
    // folder is made and the record read when it is asked for, as no other thread may read it.
    std::function<void(const ToolScript&)> beginRegistration(
        const std::shared_ptr<ModelRunner>& runner);

    // The calls that the background queue has made.
    std::vector<ToolCall> calls;

private:
    ToolCall callFor(const ModelRunner& runner) const;
    void run(const std::shared_ptr<ModelRunner>& runner, const ToolCall& call,
             const ToolScript& script);
    void succeed(ModelRunner& runner);
    void fail(const std::string& description);

    ModelMachine& machine_;
};

}  // namespace valdorn::simulation
