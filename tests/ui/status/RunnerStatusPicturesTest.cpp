#include <QTest>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/status/RunnerStatusView.h"
#include "ui/status/StatusStage.h"

namespace valdorn {
namespace {

// The scheme of each picture, by the end of its name.
class RunnerStatusPicturesTest : public testing::TestWithParam<Scheme> {
protected:
    void expectPicture(const std::string& name, double scale = 1) {
        Pictures::expectLikeReference(Pictures::render(*stage.window, scale),
                                      name + suffixOf(GetParam()));
    }

    const Looks looks{GetParam()};
    StatusStage stage;
};

INSTANTIATE_TEST_SUITE_P(Schemes, RunnerStatusPicturesTest,
                         testing::Values(Scheme::light, Scheme::dark), [](const auto& scheme) {
                             return scheme.param == Scheme::light ? "Light" : "Dark";
                         });

TEST_P(RunnerStatusPicturesTest, OneRunner) {
    stage.makeOneRunner();
    stage.show();
    stage.releaseIs("v1.0.8");
    expectPicture("status_one");
}

TEST_P(RunnerStatusPicturesTest, ThreeRunners) {
    stage.makeThreeRunners();
    stage.show(480, 340);
    stage.releaseIs("v1.0.8");
    // The keyboard is at the second runner.
    QTest::keyClick(stage.window.get(), Qt::Key_Tab);
    QTest::keyClick(stage.window.get(), Qt::Key_Tab);
    expectPicture("status_three");
}

TEST_P(RunnerStatusPicturesTest, ThreeRunnersOnASharpScreen) {
    stage.makeThreeRunners();
    stage.show(460, 340);
    stage.releaseIs("v1.0.8");
    expectPicture("status_three_2x", 2);
}

TEST_P(RunnerStatusPicturesTest, TwelveRunners) {
    stage.makeTwelveRunners();
    stage.show();
    expectPicture("status_twelve");
}

// The window on other desktops.
class RunnerStatusLooksTest : public testing::Test {
protected:
    void expectPicture(Scheme scheme, const std::string& name, double scale = 1,
                       double bodyPoints = 10) {
        const Looks looks(scheme, bodyPoints);
        StatusStage stage;
        stage.makeThreeRunners();
        stage.print(0, "dial tcp: connect: no route to host\n");
        stage.show(480, bodyPoints > 10 ? 540 : 320);
        stage.releaseIs("v1.0.8");
        Pictures::expectLikeReference(Pictures::render(*stage.window, scale),
                                      name + suffixOf(scheme));
    }
};

TEST_F(RunnerStatusLooksTest, HighContrast) {
    for (const Scheme scheme : {Scheme::blackOnWhite, Scheme::whiteOnBlack})
        expectPicture(scheme, "status_three");
}

TEST_F(RunnerStatusLooksTest, RightToLeft) {
    const RightToLeft mirrored;
    expectPicture(Scheme::light, "status_mirrored");
}

TEST_F(RunnerStatusLooksTest, HalfSteps) {
    expectPicture(Scheme::light, "status_three_1.5x", 1.5);
}

TEST_F(RunnerStatusLooksTest, TextOfTwiceTheSize) {
    expectPicture(Scheme::light, "status_huge", 1, 20);
}

}  // namespace
}  // namespace valdorn
