#include <QWidget>
#include <string>

#include <gtest/gtest.h>

#include "ui/Pictures.h"
#include "ui/log/LogStage.h"
#include "ui/log/LogViewerView.h"

namespace valdorn {
namespace {

class LogPicturesTest : public testing::Test {
protected:
    // With the keyboard at the filter.
    static void expectPicture(Scheme scheme, const std::string& name, double bodyPoints = 10) {
        const Looks looks(scheme, bodyPoints);
        LogStage stage;
        stage.show();
        stage.view->setFocus();
        Pictures::expectLikeReference(Pictures::render(*stage.window), name + suffixOf(scheme));
    }
};

TEST_F(LogPicturesTest, EverySchemeOfColours) {
    for (const Scheme scheme :
         {Scheme::light, Scheme::dark, Scheme::blackOnWhite, Scheme::whiteOnBlack})
        expectPicture(scheme, "log");
}

TEST_F(LogPicturesTest, RightToLeft) {
    const RightToLeft mirrored;
    expectPicture(Scheme::light, "log_mirrored");
}

TEST_F(LogPicturesTest, TextOfTwiceTheSize) {
    expectPicture(Scheme::light, "log_huge", 20);
}

TEST_F(LogPicturesTest, HalfStepsWithTheKeyboardAtTheLines) {
    const Looks looks(Scheme::light);
    LogStage stage;
    stage.show();
    stage.view->findChild<QWidget*>(QStringLiteral("logRows"))->setFocus();
    Pictures::expectLikeReference(Pictures::render(*stage.window, 1.5), "log_1.5x_light");
}

}  // namespace
}  // namespace valdorn
