#pragma once

#include <QFont>
#include <QImage>
#include <QString>
#include <string>

#include <gtest/gtest.h>

class QWidget;

namespace valdorn {

enum class Scheme { light, dark, blackOnWhite, whiteOnBlack };

// Dresses the application in the same clothes on every machine, for as long as it lives: the Fusion
// style, a light or dark palette, or one of high contrast, DejaVu Sans. Widgets that exist change
// with it, and back.
class Looks {
public:
    explicit Looks(Scheme scheme, double bodyPoints = 10);
    ~Looks();
    Looks(const Looks&) = delete;
    Looks& operator=(const Looks&) = delete;

    // Changes while widgets look on, as a desktop does.
    void change(Scheme scheme, double bodyPoints = 10);

private:
    const QString styleBefore_;
    const QFont fontBefore_;
};

// The end of the names of pictures in that scheme, such as "_light".
std::string suffixOf(Scheme scheme);

// Turns the desktop to one that is read from right to left, for as long as it lives. Widgets that
// exist turn with it, and back.
class RightToLeft {
public:
    RightToLeft();
    ~RightToLeft();
    RightToLeft(const RightToLeft&) = delete;
    RightToLeft& operator=(const RightToLeft&) = delete;
};

// Pictures of widgets, and how they compare with pictures that somebody has looked at.
namespace Pictures {

// The widget as it would stand on a screen of that scale, with its window's background.
QImage render(QWidget& widget, double scale = 1);

// Alike means: of one size, on average of one colour, and with next to no place that differs from
// every place within a pixel's reach in the other picture. Smoother edges pass; a layout that is
// shifted by three pixels, another colour or a missing control does not. Says by how much.
testing::AssertionResult areAlike(const QImage& seen, const QImage& reference);

// Compares with tests/ui/pictures/<name>.png. What was seen goes to the folder `pictures` of the
// build in any case; with VALDORN_UPDATE_PICTURES in the environment it becomes the reference.
void expectLikeReference(const QImage& seen, const std::string& name);

}  // namespace Pictures

}  // namespace valdorn
