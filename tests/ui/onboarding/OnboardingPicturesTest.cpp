#include <QTest>
#include <string>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/onboarding/OnboardingStage.h"

namespace valdorn {
namespace {

// The scheme of each picture, by the end of its name.
class OnboardingPicturesTest : public testing::TestWithParam<Scheme> {
protected:
    void expectPicture(const std::string& name, int scale = 1) {
        Pictures::expectLikeReference(Pictures::render(*stage.window, scale),
                                      name + (GetParam() == Scheme::light ? "_light" : "_dark"));
    }

    Looks looks{GetParam(), 9};
    OnboardingStage stage;
};

INSTANTIATE_TEST_SUITE_P(Schemes, OnboardingPicturesTest,
                         testing::Values(Scheme::light, Scheme::dark), [](const auto& scheme) {
                             return scheme.param == Scheme::light ? "Light" : "Dark";
                         });

TEST_P(OnboardingPicturesTest, FirstStart) {
    stage.unregister("r0");
    stage.show();
    stage.become(RunnerStatus::notRegistered);
    expectPicture("onboarding_first");
}

TEST_P(OnboardingPicturesTest, RefusedOnASharpScreen) {
    stage.show();
    stage.become(RunnerStatus::noNetwork);
    expectPicture("onboarding_refused_2x", 2);
}

TEST_P(OnboardingPicturesTest, ConnectedWithTheKeyboardAtAButton) {
    stage.show();
    stage.become(RunnerStatus::connected);
    QTest::keyClick(stage.button("continue"), Qt::Key_Tab);
    expectPicture("onboarding_connected");
}

TEST_P(OnboardingPicturesTest, LargeText) {
    looks.change(GetParam(), 13.5);
    stage.show();
    stage.become(RunnerStatus::noNetwork);
    expectPicture("onboarding_large");
}

}  // namespace
}  // namespace valdorn
