#include "Registration.h"

#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "RunnerFile.h"

namespace valdorn::demo {
namespace {

std::vector<std::string> splitAtCommas(const std::string& text) {
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, ',');) {
        pieces.push_back(piece);
    }
    return pieces;
}

// The schema of a label such as "linux:docker://image" that act_runner does not know, or empty.
std::string unknownSchema(const std::string& label) {
    const std::size_t colon = label.find(':');
    if (colon == std::string::npos) {
        return "";
    }
    const std::string rest = label.substr(colon + 1);
    const std::string schema = rest.substr(0, rest.find(':'));
    return schema == "host" || schema == "docker" ? "" : schema;
}

}  // namespace

Registration::Registration(RegistrationRequest request, Script script, Output& output,
                           StopSignals& signals)
    : request_(std::move(request)),
      script_(std::move(script)),
      output_(output),
      signals_(signals),
      player_(output, signals) {}

int Registration::run() {
    for (const Step& step : script_.registerSteps) {
        if (std::holds_alternative<BadToken>(step)) {
            return refuseToken();
        }
        if (const auto code = player_.play(step)) {
            return *code;
        }
        if (signals_.isStopRequested()) {
            return fail("Failed to register runner: context canceled");
        }
    }
    return registerNow();
}

int Registration::registerNow() {
    if (request_.token == "bad") {
        return refuseToken();
    }
    print({Level::info, "Registering runner, arch=amd64, os=linux, version=v1.0.8."});
    if (request_.instance.empty()) {
        return refuseInput("instance address is empty");
    }
    if (request_.token.empty()) {
        return refuseInput("token is empty");
    }
    const std::vector<std::string> labels = splitAtCommas(request_.labels);
    for (const std::string& label : labels) {
        if (const std::string schema = unknownSchema(label); !schema.empty()) {
            return refuseInput("unsupported schema: " + schema);
        }
    }
    print({Level::debug, "Successfully pinged the Gitea instance server"});
    try {
        RunnerFile{request_.name, request_.instance, labels}.save();
    } catch (const std::runtime_error& error) {
        return fail(std::string("Failed to register runner: ") + error.what());
    }
    print({Level::info, "Runner registered successfully."});
    return 0;
}

int Registration::refuseToken() {
    const std::string reason = "unauthenticated: runner registration token not found";
    print({Level::info, "Registering runner, arch=amd64, os=linux, version=v1.0.8."});
    print({Level::debug, "Successfully pinged the Gitea instance server"});
    print(LogLine(Level::error, "poller: cannot register new runner").error(reason));
    return fail("Failed to register runner: " + reason);
}

int Registration::refuseInput(const std::string& reason) {
    print(LogLine(Level::error, "Invalid input, please re-run act command.").error(reason));
    return fail(reason);
}

int Registration::fail(const std::string& error) {
    output_.line(Stream::standardError, "Error: " + error);
    return 1;
}

void Registration::print(const LogLine& line) {
    output_.line(Stream::standardError, line.forRegister());
}

}  // namespace valdorn::demo
