#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
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

// The registration form by the rules. What is set is announced, of whatever value.
class ModelForm {
public:
    ModelForm(ModelMachine& machine, std::size_t number) : machine_(machine) {
        view_.number = number;
    }

    const FormView& view() const { return view_; }
    void setToken(const std::string& token);

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
    template <typename Value>
    void set(Value FormView::*field, const std::type_identity_t<Value>& value);

    ModelMachine& machine_;
    FormView view_;
};

}  // namespace valdorn::simulation
