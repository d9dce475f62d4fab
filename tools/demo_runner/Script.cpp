#include "Script.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <utility>

#include "Words.h"

namespace valdorn::demo {
namespace {

enum class Command { both, daemon, registration };

struct StepForm {
    std::string_view name;
    Command command;
    Step (*parse)(Words& arguments);
};

Step parseCrash(Words& arguments) {
    const std::string how = arguments.empty() ? "abort" : arguments.word("how");
    if (how == "abort") {
        return Crash{SIGABRT};
    }
    if (how == "segv") {
        return Crash{SIGSEGV};
    }
    if (how == "kill") {
        return Crash{SIGKILL};
    }
    throw ScriptError("crash is one of abort, segv, kill, not \"" + how + "\"");
}

Step parseFlood(Words& arguments) {
    const std::uint64_t bytes = arguments.byteCount("size");
    const std::string form = arguments.rest("form");
    if (form == "lines") {
        return Flood{bytes, Flood::Form::lines};
    }
    if (form == "no-line-end") {
        return Flood{bytes, Flood::Form::noLineEnd};
    }
    if (form == "binary") {
        return Flood{bytes, Flood::Form::binary};
    }
    throw ScriptError("a flood is one of lines, no-line-end, binary, not \"" + form + "\"");
}

Step parseCrlf(Words& arguments) {
    const std::string state = arguments.word("on or off");
    if (state != "on" && state != "off") {
        throw ScriptError("crlf is on or off, not \"" + state + "\"");
    }
    return Crlf{state == "on"};
}

Step parseJob(Words& arguments) {
    const auto time = arguments.lastDuration("time");
    const std::string repository = arguments.word("repository");
    return Job{repository, arguments.rest("Workflow/job"), time};
}

Step parsePrint(Words& arguments, Stream stream) {
    Text text = arguments.text();
    return Print{stream, std::move(text.bytes), text.hasLineEnd};
}

constexpr std::uint64_t maxExitCode = 255;
constexpr std::uint64_t maxWidth = 1000;

const StepForm stepForms[] = {
    {"wait", Command::both, [](Words& a) -> Step { return Wait{a.duration("time")}; }},
    {"hang", Command::both, [](Words&) -> Step { return Hang{}; }},
    {"line", Command::both, [](Words& a) -> Step { return parsePrint(a, Stream::standardError); }},
    {"stdout", Command::both,
     [](Words& a) -> Step { return parsePrint(a, Stream::standardOutput); }},
    {"crash", Command::both, parseCrash},
    {"exit", Command::both,
     [](Words& a) -> Step { return Exit{static_cast<int>(a.number("exit code", maxExitCode))}; }},
    {"ignore-term", Command::both, [](Words&) -> Step { return IgnoreTerm{}; }},
    {"flood", Command::both, parseFlood},
    {"crlf", Command::both, parseCrlf},
    {"split-writes", Command::both,
     [](Words& a) -> Step { return SplitWrites{a.number("bytes", maxWidth)}; }},
    {"grandchild", Command::both, [](Words& a) -> Step { return Grandchild{a.duration("time")}; }},
    {"start", Command::daemon, [](Words&) -> Step { return Start{}; }},
    {"declare", Command::daemon, [](Words&) -> Step { return Declare{}; }},
    {"job", Command::daemon, parseJob},
    {"no-route-to-host", Command::daemon,
     [](Words&) -> Step { return FetchFailure{"no route to host"}; }},
    {"permission-denied", Command::daemon,
     [](Words&) -> Step { return FetchFailure{"permission denied"}; }},
    {"connection-refused", Command::daemon,
     [](Words&) -> Step { return FetchFailure{"connection refused"}; }},
    {"pad", Command::daemon, [](Words& a) -> Step { return Pad{a.number("width", maxWidth)}; }},
    {"loop", Command::daemon, [](Words&) -> Step { return Loop{}; }},
    {"bad-token", Command::registration, [](Words&) -> Step { return BadToken{}; }},
};

const StepForm& findForm(const std::string& name, Command command) {
    for (const StepForm& form : stepForms) {
        if (form.name != name) {
            continue;
        }
        if (form.command != Command::both && form.command != command) {
            throw ScriptError("\"" + name + "\" is no step of " +
                              (command == Command::daemon ? "the daemon" : "register"));
        }
        return form;
    }
    throw ScriptError("unknown step \"" + name + "\"");
}

Step parseStep(std::string_view line, Command command) {
    Words words(line);
    const StepForm& form = findForm(words.word("step"), command);
    Step step = form.parse(words);
    words.expectEnd();
    return step;
}

void parseLine(std::string_view line, Script& script) {
    constexpr std::string_view registerPrefix = "register:";
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string_view::npos || line[start] == '#') {
        return;
    }
    line.remove_prefix(start);
    if (line.substr(0, registerPrefix.size()) == registerPrefix) {
        line.remove_prefix(registerPrefix.size());
        script.registerSteps.push_back(parseStep(line, Command::registration));
    } else {
        script.daemonSteps.push_back(parseStep(line, Command::daemon));
    }
}

std::optional<std::string> readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::ostringstream text;
    text << file.rdbuf();
    return std::move(text).str();
}

}  // namespace

Script parseScript(std::string_view text, const std::string& name) {
    Script script;
    for (int number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        try {
            parseLine(line, script);
        } catch (const ScriptError& error) {
            throw ScriptError(name + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    return script;
}

Script loadScript() {
    constexpr const char* usualName = "demo_runner.script";
    const char* named = std::getenv("VALDORN_DEMO_SCRIPT");
    const std::string path = named != nullptr ? named : usualName;
    const std::optional<std::string> text = readFile(path);
    if (!text && named != nullptr) {
        throw ScriptError(path + ": cannot be read");
    }
    return parseScript(text.value_or(""), path);
}

Script ordinaryLife() {
    // The first job comes soon, so that a demonstration has something to show at once.
    return parseScript(
        "start\ndeclare\nwait 4s\njob acme/site Deploy/push 8s\n"
        "wait 45s\njob acme/app CI/build 8s\n"
        "wait 45s\njob acme/docs Pages/publish 8s\nwait 41s\nloop\n",
        "ordinary life");
}

std::string_view stepHelp() {
    return R"(Steps, one a line; "register: STEP" is played by register, all others by the daemon:
  start                    what a daemon prints first
  declare                  the runner has declared itself to the server
  job OWNER/NAME WORKFLOW/JOB TIME   a whole job that takes that time
  pad WIDTH                from now on pad job names to this width, as for jobs of one matrix
  no-route-to-host, permission-denied, connection-refused   a poll that fails that way
  loop                     go on after the last declare, or from the beginning
  bad-token                the server refuses the token; exits with 1 (register only)
  wait TIME                such as 500ms, 3s, 2m
  hang                     wait for ever
  line TEXT, stdout TEXT   print a line on standard error, on standard output; knows \n \r \t
                           \\ \0 \e \xHH, and \c at the end for no line end
  flood SIZE FORM          such as 100MB; FORM is lines, no-line-end or binary
  crlf on|off              end lines with CR LF
  split-writes N           write N bytes at a time; 0 for whole lines
  grandchild TIME          leave a process behind that holds the output open that long
  ignore-term              take no notice of SIGTERM and SIGINT any more
  crash [abort|segv|kill]  die by a signal
  exit CODE
)";
}

}  // namespace valdorn::demo
