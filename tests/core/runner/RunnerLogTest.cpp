#include <string>

#include <gtest/gtest.h>

#include "runner/RunnerLog.h"

namespace valdorn {
namespace {

using Kind = RunnerLogEvent::Kind;

Kind kindOf(std::string_view line) {
    return RunnerLog::event(line).kind;
}

TEST(RunnerLogEvent, RepositoryIsTheFirstWordAfterTheMarker) {
    EXPECT_EQ(RunnerLog::event("task 7 repo is acme/site ok"),
              (RunnerLogEvent{Kind::repository, "acme/site"}));
    EXPECT_EQ(RunnerLog::event("x repo is    acme/site"),
              (RunnerLogEvent{Kind::repository, "acme/site"}));
    EXPECT_EQ(RunnerLog::event(" repo is a/b repo is c/d").repository, "a/b");
}

TEST(RunnerLogEvent, IsAnotherOneByItsKindAndByItsRepository) {
    EXPECT_NE((RunnerLogEvent{Kind::repository, "a"}), (RunnerLogEvent{Kind::repository, "b"}));
    EXPECT_NE((RunnerLogEvent{Kind::declared, {}}), (RunnerLogEvent{Kind::jobStarted, {}}));
}

TEST(RunnerLogEvent, RepositoryNeedsABlankBeforeTheMarker) {
    EXPECT_EQ(RunnerLog::event("repo is acme"), RunnerLogEvent{});
}

TEST(RunnerLogEvent, OnlyTheBlankSeparatesWords) {
    EXPECT_EQ(RunnerLog::event("a repo is acme/site\tx y").repository, "acme/site\tx");
}

TEST(RunnerLogEvent, RepositoryWithoutAWordFallsThroughToTheOtherRules) {
    EXPECT_EQ(kindOf("x repo is "), Kind::unrelated);
    EXPECT_EQ(kindOf("x repo is    "), Kind::unrelated);
    EXPECT_EQ(kindOf("declare successfully repo is   "), Kind::declared);
    EXPECT_EQ(kindOf("Running job with maxParallel repo is "), Kind::jobStarted);
}

TEST(RunnerLogEvent, OnlyTheFirstMarkerCounts) {
    // What follows the first marker is "repo is b", whose first word is "repo".
    EXPECT_EQ(RunnerLog::event("x repo is  repo is b").repository, "repo");
}

TEST(RunnerLogEvent, JobStarts) {
    EXPECT_EQ(kindOf("msg=\"Running job with maxParallel=1 for 1 matrix combinations\""),
              Kind::jobStarted);
}

TEST(RunnerLogEvent, JobFinishesWhenAWorkerFinished) {
    EXPECT_EQ(kindOf("Worker 3 finished (ok)"), Kind::jobFinished);
    EXPECT_EQ(kindOf("finished (1 tasks executed) by Worker"), Kind::jobFinished);
}

TEST(RunnerLogEvent, WorkerAloneFallsThrough) {
    EXPECT_EQ(kindOf("Worker started"), Kind::unrelated);
    EXPECT_EQ(kindOf("Worker finished"), Kind::unrelated);
    EXPECT_EQ(kindOf("Worker finished("), Kind::unrelated);
    EXPECT_EQ(kindOf("Worker: declare successfully"), Kind::declared);
    EXPECT_EQ(kindOf("Worker: no route to host"), Kind::networkBlocked);
    EXPECT_EQ(kindOf("job finished (ok)"), Kind::unrelated);
}

TEST(RunnerLogEvent, Declares) {
    EXPECT_EQ(kindOf("runner: mac, with version: v1, declare successfully"), Kind::declared);
}

TEST(RunnerLogEvent, NetworkIsBlocked) {
    EXPECT_EQ(kindOf("dial tcp: connect: no route to host"), Kind::networkBlocked);
    EXPECT_EQ(kindOf("socket: permission denied"), Kind::networkBlocked);
}

TEST(RunnerLogEvent, EverythingElseIsUnrelated) {
    EXPECT_EQ(kindOf(""), Kind::unrelated);
    EXPECT_EQ(kindOf("fetch task"), Kind::unrelated);
}

TEST(RunnerLogEvent, EachTextCountsToItsLastCharacter) {
    EXPECT_EQ(kindOf("task 7 repo isacme"), Kind::unrelated);
    EXPECT_EQ(kindOf("Running job with maxParalle"), Kind::unrelated);
    EXPECT_EQ(kindOf("Worke finished ("), Kind::unrelated);
    EXPECT_EQ(kindOf("Worker finished "), Kind::unrelated);
    EXPECT_EQ(kindOf("declare successfull"), Kind::unrelated);
    EXPECT_EQ(kindOf("no route to hos"), Kind::unrelated);
    EXPECT_EQ(kindOf("permission denie"), Kind::unrelated);
}

TEST(RunnerLogEvent, EachTextCountsFromItsFirstCharacter) {
    EXPECT_EQ(kindOf("unning job with maxParallel"), Kind::unrelated);
    EXPECT_EQ(kindOf("orker finished ("), Kind::unrelated);
    EXPECT_EQ(kindOf("Worker inished ("), Kind::unrelated);
    EXPECT_EQ(kindOf("eclare successfully"), Kind::unrelated);
    EXPECT_EQ(kindOf("o route to host"), Kind::unrelated);
    EXPECT_EQ(kindOf("ermission denied"), Kind::unrelated);
}

TEST(RunnerLogEvent, CaseCounts) {
    EXPECT_EQ(kindOf("Declare successfully"), Kind::unrelated);
    EXPECT_EQ(kindOf("No route to host"), Kind::unrelated);
    EXPECT_EQ(kindOf("Permission denied"), Kind::unrelated);
    EXPECT_EQ(kindOf("running job with maxParallel"), Kind::unrelated);
    EXPECT_EQ(kindOf("worker 1 finished (ok)"), Kind::unrelated);
    EXPECT_EQ(kindOf("x Repo is a/b"), Kind::unrelated);
}

// Each line matches two neighbouring rules; the earlier one wins.
TEST(RunnerLogEvent, EarlierRulesWin) {
    EXPECT_EQ(kindOf("x repo is owner/x Running job with maxParallel"), Kind::repository);
    EXPECT_EQ(kindOf("Running job with maxParallel Worker finished ("), Kind::jobStarted);
    EXPECT_EQ(kindOf("declare successfully Worker finished ("), Kind::jobFinished);
    EXPECT_EQ(kindOf("permission denied declare successfully"), Kind::declared);
    EXPECT_EQ(kindOf("no route to host declare successfully"), Kind::declared);
}

TEST(RunnerLogEvent, PayloadBelongsToRepositoryAlone) {
    EXPECT_EQ(RunnerLog::event("Worker 1 finished (ok)").repository, "");
}

struct LabelCase {
    const char* line;
    const char* label;  // nullptr for none
};

class WorkflowJob : public testing::TestWithParam<LabelCase> {};

TEST_P(WorkflowJob, IsReadFromTheBrackets) {
    const auto label = RunnerLog::workflowJob(GetParam().line);
    if (GetParam().label == nullptr) {
        EXPECT_EQ(label, std::nullopt) << GetParam().line;
    } else {
        EXPECT_EQ(label, std::string(GetParam().label)) << GetParam().line;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, WorkflowJob,
    testing::Values(LabelCase{"[CI/build] step", "CI/build"},
                    LabelCase{"[Deploy/push] Run step", "Deploy/push"},
                    LabelCase{"[My Flow/job] x", "My Flow/job"}, LabelCase{"[a/b c] x", nullptr},
                    LabelCase{"[CI/build   ] x", nullptr}, LabelCase{"x [a/b]", nullptr},
                    LabelCase{"", nullptr}, LabelCase{"[", nullptr}, LabelCase{"[a/b", nullptr},
                    LabelCase{"[a/]", nullptr}, LabelCase{"[/b]", nullptr},
                    LabelCase{"[]", nullptr}, LabelCase{"[/]", nullptr}, LabelCase{"[//]", nullptr},
                    LabelCase{"[ab]", nullptr}, LabelCase{"[a/b/c]", "a/b/c"},
                    LabelCase{"[a/b/ c]", nullptr}, LabelCase{"[//a/b]", "//a/b"},
                    LabelCase{"[a//b]", "a//b"}, LabelCase{"[a//]", "a//"},
                    LabelCase{"[ /b]", " /b"}, LabelCase{"[a/b]c]", "a/b"},
                    LabelCase{"[[a/b]]", "[a/b"}, LabelCase{"[a]/b]", nullptr},
                    LabelCase{"[a/b\tc]", "a/b\tc"}));

TEST(RunnerVersion, EndsAtACommaABlankOrTheLineEnd) {
    EXPECT_EQ(RunnerLog::version("x with version: 1.2.3, with labels"), "1.2.3");
    EXPECT_EQ(RunnerLog::version("x with version: v0.2 more"), "v0.2");
    EXPECT_EQ(RunnerLog::version("with version: dev"), "dev");
}

TEST(RunnerVersion, MissingOrEmptyGivesNone) {
    EXPECT_EQ(RunnerLog::version("x with version: "), std::nullopt);
    EXPECT_EQ(RunnerLog::version("x with version: , y"), std::nullopt);
    EXPECT_EQ(RunnerLog::version("x with version:1"), std::nullopt);
    EXPECT_EQ(RunnerLog::version("with version:  1.0"), std::nullopt);
    EXPECT_EQ(RunnerLog::version(""), std::nullopt);
}

TEST(RunnerVersion, ItsTextCountsAsAWhole) {
    EXPECT_EQ(RunnerLog::version("ith version: 1.2"), std::nullopt);
    EXPECT_EQ(RunnerLog::version("with version:1.2"), std::nullopt);
}

TEST(RunnerVersion, FirstMentionCounts) {
    EXPECT_EQ(RunnerLog::version("with version: 1 with version: 2"), "1");
    EXPECT_EQ(RunnerLog::version("with version: , with version: 2"), std::nullopt);
}

}  // namespace
}  // namespace valdorn
