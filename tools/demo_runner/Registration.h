#pragma once

#include <string>

#include "LogLine.h"
#include "Output.h"
#include "Script.h"
#include "StepPlayer.h"
#include "StopSignals.h"

namespace valdorn::demo {

// What the command line of register says.
struct RegistrationRequest {
    std::string instance;
    std::string token;
    std::string name;
    std::string labels;  // separated by commas
};

// The command `register --no-interactive`: plays the script's steps for it, then registers, unless
// a step has ended it. The token "bad" is refused, every other one accepted.
class Registration {
public:
    Registration(RegistrationRequest request, Script script, Output& output, StopSignals& signals);

    int run();  // returns the exit code

private:
    int registerNow();
    int refuseToken();
    int refuseInput(const std::string& reason);
    int fail(const std::string& error);
    void print(const LogLine& line);

    const RegistrationRequest request_;
    const Script script_;
    Output& output_;
    StopSignals& signals_;
    StepPlayer player_;
};

}  // namespace valdorn::demo
