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
    std::string named(const std::string& name) const {
        return name + (GetParam() == Scheme::light ? "_light" : "_dark");
    }
    void expectPicture(const std::string& name, int scale = 1) {
        Pictures::expectLikeReference(Pictures::render(*stage.window, scale), named(name));
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

}  // namespace
}  // namespace valdorn
