#include "app/LoginItem.h"
#include "simulation/Marks.h"
#include "simulation/Steps.h"
#include "update/UpdateCheck.h"

namespace valdorn::simulation {

namespace {

struct Answer {
    const char* body;
    const char* tag;  // nothing when it says none
};

constexpr Answer answers[] = {{R"({"tag_name":"v0.2.12"})", "v0.2.12"},
                              {R"({"id":1,"tag_name":"v0.3.0","x":[{}]})", "v0.3.0"},
                              {R"({"tag_name":""})", ""},
                              {R"({"tag_name":"v1\u00e9"})", "v1é"},
                              {R"({"message":"not found","tag_name":"odd"})", "odd"},
                              {R"({"x":{"tag_name":"inner"},"tag_name":"v0.4.0"})", "v0.4.0"},
                              {R"({"x":[{"tag_name":"inner"}]})", nullptr},
                              {R"({"tag_name":7})", nullptr},
                              {R"({"tag_name":null})", nullptr},
                              {R"({"name":"v1"})", nullptr},
                              {R"(["v1"])", nullptr},
                              {R"("tag_name")", nullptr},
                              {"<html>", nullptr},
                              {"{", nullptr},
                              {"", nullptr}};

void looksForAnUpdate(Stage& stage, Random&) {
    stage.program().updates->check();
    stage.process().updates.check();
    stage.tell("a look for an update");
}

void serviceAnswers(Stage& stage, Random& random) {
    const std::size_t requests = stage.process().updates.requests();
    if (requests == 0)
        return;
    const std::size_t index = random.chance(60) ? requests - 1 : random.below(requests);
    if (random.chance(15)) {
        stage.program().http.answer(index, HttpError{HttpError::Kind::network, "gone"});
        stage.process().updates.answer(index, std::nullopt);
        return stage.tell("request " + std::to_string(index) + " fails");
    }
    const Answer& answer = answers[random.below(std::size(answers))];
    stage.program().http.answer(index, std::string(answer.body));
    stage.process().updates.answer(
        index, answer.tag ? std::optional<std::string>(answer.tag) : std::nullopt);
    stage.tell("request " + std::to_string(index) + " is answered with " + shown(answer.body));
}

void statusWindowIsMadeAnew(Stage& stage, Random&) {
    stage.program().makeUpdates();
    stage.process().updates.forget();
    stage.tell("what is known of updates is forgotten");
}

void traySearchStarts(Stage& stage, Random&) {
    if (stage.process().search.isStarted())
        return;
    stage.program().search->start();
    stage.process().search.start();
    stage.tell("the search for a tray starts");
}

void switchHost(Stage& stage, bool& host) {
    host = !host;
    stage.program().search->hostsChanged();
    stage.process().search.setHosts(stage.program().notifierHost, stage.program().xembedHost);
    stage.tell(std::string("hosts: ") + (stage.program().notifierHost ? "notifier " : "") +
               (stage.program().xembedHost ? "xembed" : ""));
}

void trayComesOrGoes(Stage& stage, Random& random) {
    switchHost(stage,
               random.chance(60) ? stage.program().notifierHost : stage.program().xembedHost);
}

// As one of the old kind does that is started anew.
void oldTrayFlickers(Stage& stage, Random&) {
    for (int time = 0; time < 3; ++time)
        switchHost(stage, stage.program().xembedHost);
}

void gateIsUsed(Stage& stage, Random& random) {
    LaunchGate& gate = *stage.program().gate;
    ModelGate& expected = stage.process().gate;
    const std::size_t kind = random.below(10);
    if (kind < 2) {
        gate.awaitRequest();
        expected.awaitRequest();
    } else if (kind < 5) {
        gate.ready();
        expected.ready();
    } else if (kind < 9) {
        const std::string name = "request " + std::to_string(random.below(3));
        gate.request([&program = stage.program(), name] { program.gateDone.push_back(name); });
        expected.request(name);
    } else {
        gate.close();
        expected.close();
    }
    stage.tell("launch gate, " + std::to_string(kind));
}

void loginItemIsSet(Stage& stage, Random& random) {
    Machine& machine = stage.machine;
    std::optional<std::string> refusal;
    if (random.chance(30))
        refusal = "not allowed";
    machine.loginItems.failWith = refusal;
    stage.model.loginItem.refusal = refusal;
    const bool enabled = random.chance(50);
    LoginItem::set(enabled, machine.loginItems, machine.systemLog);
    stage.model.loginItem.set(enabled);
    stage.tell(enabled ? "launch at login on" : "launch at login off");
}

using Numbers = std::vector<std::size_t>;

Numbers anyVersion(Random& random) {
    Numbers numbers;
    for (std::size_t left = random.below(5); left > 0; --left)
        numbers.push_back(random.below(random.chance(50) ? 2 : 13));
    return numbers;
}

std::string textOf(Random& random, const Numbers& numbers) {
    std::string text = random.pick({"", "v", "vv", "v."});
    for (const std::size_t number : numbers) {
        text += random.pick({"", "", "0"});
        text += std::to_string(number);
        text += random.pick({".", ".", ".."});
    }
    text += random.pick({"", "", "-rc1", " beta", "x9"});
    return text;
}

bool isNewer(Numbers one, Numbers other) {
    one.resize(5);
    other.resize(5);
    return one > other;
}

void versionsAreCompared(Stage& stage, Random& random) {
    const Numbers one = anyVersion(random);
    const Numbers other = random.chance(20) ? one : anyVersion(random);
    const std::string text = textOf(random, one);
    const std::string otherText = textOf(random, other);
    if (UpdateCheck::isNewer(text, otherText) != isNewer(one, other))
        stage.fail("whether " + shown(text) + " is newer than " + shown(otherText));
}

}  // namespace

void Steps::addOutsideSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::outside, 20, looksForAnUpdate});
    kinds.push_back({Field::outside, 20, serviceAnswers});
    kinds.push_back({Field::outside, 10, versionsAreCompared});
    kinds.push_back({Field::outside, 4, statusWindowIsMadeAnew});
    kinds.push_back({Field::outside, 10, traySearchStarts});
    kinds.push_back({Field::outside, 30, trayComesOrGoes});
    kinds.push_back({Field::outside, 5, oldTrayFlickers});
    kinds.push_back({Field::outside, 30, gateIsUsed});
    kinds.push_back({Field::outside, 10, loginItemIsSet});
}

}  // namespace valdorn::simulation
