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
    void expectPicture(const std::string& name, double scale = 1) {
        Pictures::expectLikeReference(Pictures::render(*stage.window, scale),
                                      name + suffixOf(GetParam()));
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

// The window on other desktops, when the network is refused.
class OnboardingLooksTest : public testing::Test {
protected:
    void expectPicture(Scheme scheme, const std::string& name, double bodyPoints = 9) {
        const Looks looks(scheme, bodyPoints);
        OnboardingStage stage;
        stage.show();
        stage.become(RunnerStatus::noNetwork);
        Pictures::expectLikeReference(Pictures::render(*stage.window), name + suffixOf(scheme));
    }
};

TEST_F(OnboardingLooksTest, HighContrast) {
    for (const Scheme scheme : {Scheme::blackOnWhite, Scheme::whiteOnBlack})
        expectPicture(scheme, "onboarding_refused");
}

TEST_F(OnboardingLooksTest, RightToLeft) {
    const RightToLeft mirrored;
    expectPicture(Scheme::light, "onboarding_mirrored");
}

TEST_F(OnboardingLooksTest, TextOfTwiceTheSize) {
    expectPicture(Scheme::light, "onboarding_huge", 18);
}

}  // namespace
}  // namespace valdorn
