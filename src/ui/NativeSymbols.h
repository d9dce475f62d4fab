#pragma once

#include <QIcon>
#include <QImage>
#include <QString>
#include <optional>

#include "platform/SystemColor.h"

namespace valdorn {

// The program's own symbols ("bird", "bird.fill", "plus", "minus", "play.circle.fill",
// "stop.circle.fill"), drawn in one colour at any size. Main thread only.
//
// A symbol that there is no drawing for is a plain disc, so that a status still has its colour.
namespace NativeSymbols {

// The symbol on a transparent square of `pixels` by `pixels`.
QImage image(const QString& name, const QColor& color, int pixels);

// The symbol for a button, a label or a row of a list, in the text's colour (on a highlight, in the
// colour of highlighted text) or a named one. It is drawn afresh for each size and scale, in the application's palette of that moment.
QIcon icon(const QString& name, std::optional<SystemColor> color = std::nullopt);

}  // namespace NativeSymbols

}  // namespace valdorn
