#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "runner/RegistrationForm.h"
#include "support/FakeWorld.h"

namespace valdorn {
namespace {

class RegistrationFormTest : public testing::Test {
protected:
    std::shared_ptr<RunnerManager> makeRunner(const std::string& id) {
        return RunnerManager::create(FakeWorld::record(id), world.services());
    }
    // Registers, and runs what that has led to.
    void registerWith(const std::string& token) {
        form->setToken(token);
        form->doRegister(runner);
        finish();
    }
    void finish() {
        world.background.runAll();
        world.queue.runPosted();
    }
    void edit(std::string RunnerConfig::*field, const std::string& text) {
        RunnerConfig config = runner->config();
        config.*field = text;
        runner->setConfig(config);
    }

    FakeWorld world;
    std::shared_ptr<RunnerManager> runner = makeRunner("a");
    std::shared_ptr<RegistrationForm> form =
        RegistrationForm::create(world.queue, world.background);
};

TEST_F(RegistrationFormTest, BeginsEmpty) {
    EXPECT_EQ(form->token(), "");
    EXPECT_FALSE(form->busy());
    EXPECT_EQ(form->message(), std::nullopt);
    EXPECT_FALSE(form->ok());
}

TEST_F(RegistrationFormTest, NeedsATokenAnInstanceAndAName) {
    EXPECT_FALSE(form->canRegister(*runner));
    form->setToken("t");
    EXPECT_TRUE(form->canRegister(*runner));
    edit(&RunnerConfig::instanceURL, "");
    EXPECT_FALSE(form->canRegister(*runner));
    edit(&RunnerConfig::instanceURL, "u");
    edit(&RunnerConfig::name, "");
    EXPECT_FALSE(form->canRegister(*runner));
    edit(&RunnerConfig::name, "n");
    edit(&RunnerConfig::labels, "");
    EXPECT_TRUE(form->canRegister(*runner));
}

TEST_F(RegistrationFormTest, BlanksCountAsFilled) {
    form->setToken(" ");
    edit(&RunnerConfig::instanceURL, " ");
    edit(&RunnerConfig::name, " ");
    EXPECT_TRUE(form->canRegister(*runner));
}

TEST_F(RegistrationFormTest, IsBusyForEveryRunnerUntilTheOutcomeArrives) {
    const auto other = makeRunner("b");
    form->setToken("t");
    form->doRegister(runner);
    EXPECT_TRUE(form->busy());
    EXPECT_FALSE(form->canRegister(*runner));
    EXPECT_FALSE(form->canRegister(*other));
    world.background.runAll();
    EXPECT_TRUE(form->busy()) << "the outcome is posted, not applied by the background";
    world.queue.runPosted();
    EXPECT_FALSE(form->busy());
}

TEST_F(RegistrationFormTest, RunsTheToolInTheBackgroundOnly) {
    form->setToken("t");
    form->doRegister(runner);
    EXPECT_TRUE(world.launcher.runs.empty());
    EXPECT_EQ(world.background.count(), 1U);
}

TEST_F(RegistrationFormTest, HandsTheToolTheRecordAndTheTokenAsTheyAreTyped) {
    edit(&RunnerConfig::name, " a \"b\" ");
    registerWith(" to ken ");
    ASSERT_EQ(world.launcher.runs.size(), 1U);
    EXPECT_EQ(world.launcher.runs[0].arguments,
              (std::vector<std::string>{"register", "--no-interactive", "--instance",
                                        "http://gitea.test", "--token", " to ken ", "--name",
                                        " a \"b\" ", "--labels", "macos"}));
}

TEST_F(RegistrationFormTest, SuccessEmptiesTheTokenAndStartsTheRunner) {
    world.launcher.duringRun = [this] { world.markRegistered("a"); };
    registerWith("t");
    EXPECT_EQ(form->message(), "Registered ✓");
    EXPECT_TRUE(form->ok());
    EXPECT_EQ(form->token(), "");
    EXPECT_TRUE(runner->keepRunning());
    EXPECT_EQ(world.launcher.childCount(), 1U);
    world.queue.runPosted();
    EXPECT_EQ(runner->status(), RunnerStatus::starting);
}

TEST_F(RegistrationFormTest, SuccessWithoutARegistrationFileLeavesTheRunnerUnregistered) {
    registerWith("t");
    world.queue.runPosted();
    EXPECT_EQ(form->message(), "Registered ✓");
    EXPECT_FALSE(runner->keepRunning());
    EXPECT_EQ(runner->status(), RunnerStatus::notRegistered);
}

TEST_F(RegistrationFormTest, FailureTellsTheToolsLastLineAndKeepsTheToken) {
    world.toolFails("INFO registering\nError: instance address is empty\n");
    registerWith("t");
    EXPECT_EQ(form->message(), "Error: instance address is empty");
    EXPECT_FALSE(form->ok());
    EXPECT_EQ(form->token(), "t");
    EXPECT_EQ(world.launcher.childCount(), 0U);
    EXPECT_TRUE(form->canRegister(*runner)) << "to try again";
}

TEST_F(RegistrationFormTest, SilentFailureIsAnEmptyMessage) {
    world.toolFails("");
    registerWith("t");
    EXPECT_EQ(form->message(), "");
}

TEST_F(RegistrationFormTest, ToolThatCannotBeLaunchedIsToldInTheSystemsWords) {
    const LaunchError error{LaunchError::Step::execute, ENOENT, "/act_runner"};
    world.launcher.runScript.emplace_back(error);
    registerWith("t");
    EXPECT_EQ(form->message(), error.description());
    EXPECT_FALSE(form->ok());
    EXPECT_EQ(form->token(), "t");
}

TEST_F(RegistrationFormTest, ASecondClickRegistersNothing) {
    form->setToken("t");
    form->doRegister(runner);
    form->doRegister(runner);
    EXPECT_EQ(world.background.count(), 1U);
}

TEST_F(RegistrationFormTest, WhatIsIncompleteIsNotRegistered) {
    form->doRegister(runner);
    EXPECT_FALSE(form->busy());
    EXPECT_EQ(world.background.count(), 0U);
}

TEST_F(RegistrationFormTest, NextTryClearsTheMessageAtOnce) {
    world.toolFails("Error: no\n");
    registerWith("t");
    form->doRegister(runner);
    EXPECT_EQ(form->message(), std::nullopt);
    finish();
    EXPECT_EQ(form->message(), "Registered ✓");
    EXPECT_TRUE(form->ok());
}

TEST_F(RegistrationFormTest, SuccessStaysTheLastWordUntilTheNextOutcome) {
    registerWith("t");
    form->setToken("t");
    form->doRegister(runner);
    EXPECT_TRUE(form->ok());
    world.toolFails("Error: no\n");
    finish();
    EXPECT_FALSE(form->ok());
}

TEST_F(RegistrationFormTest, ActsOnTheRunnerThatWasTakenAtTheClick) {
    const auto other = makeRunner("b");
    const auto taken = runner;
    world.launcher.duringRun = [this] {
        world.markRegistered("a");
        world.markRegistered("b");
    };
    form->setToken("t");
    form->doRegister(runner);
    runner = other;
    form->setToken("typed meanwhile");
    finish();
    EXPECT_EQ(world.launcher.runs[0].arguments[5], "t");
    EXPECT_TRUE(taken->keepRunning());
    EXPECT_FALSE(other->keepRunning());
    EXPECT_EQ(form->token(), "") << "whatever is in the field by then";
}

TEST_F(RegistrationFormTest, OutcomeIsOneTaskInWhichTheTokenIsEmptiedBeforeTheStart) {
    world.launcher.duringRun = [this] { world.markRegistered("a"); };
    form->setToken("t");
    form->doRegister(runner);
    std::vector<std::string> seen;
    const Subscription subscription = form->onWillChange([&]() VALDORN_ON_MAIN_THREAD {
        seen.push_back(std::string(form->busy() ? "busy" : "idle") +
                       (form->ok() ? " ok" : " not ok") + (form->message() ? " told" : " untold") +
                       (runner->keepRunning() ? " started" : " not started"));
    });
    world.background.runAll();
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(world.queue.pending(), 1U);
    world.queue.runPosted();
    EXPECT_EQ(seen, (std::vector<std::string>{
                        "busy not ok untold not started", "idle not ok untold not started",
                        "idle ok untold not started", "idle ok told not started"}));
    EXPECT_EQ(form->token(), "");
    EXPECT_TRUE(runner->keepRunning());
}

TEST_F(RegistrationFormTest, OutcomeForAFormThatIsGoneIsDropped) {
    form->setToken("t");
    form->doRegister(runner);
    form.reset();
    finish();
    EXPECT_EQ(world.launcher.runs.size(), 1U);
    EXPECT_FALSE(runner->keepRunning());
}

TEST_F(RegistrationFormTest, RunnerIsGivenBackToTheMainThread) {
    form->setToken("t");
    form->doRegister(runner);
    const std::weak_ptr<RunnerManager> weak = runner;
    runner.reset();
    world.background.runAll();
    EXPECT_FALSE(weak.expired()) << "the background task must not be its last owner";
    world.queue.runPosted();
    EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace valdorn
