#pragma once

class QColor;
class QPainter;

namespace valdorn {

// The wheel of spokes that says that something is going on. Main thread only.
namespace Spokes {

// How many there are, and so how many positions one turn has.
inline constexpr int count = 8;

// Draws the wheel around the painter's origin. The spoke at which the turn has arrived is the
// strongest, and they fade behind it. Lengths are in the painter's units.
void draw(QPainter& painter, int position, double radius, double spokeWidth, const QColor& color);

}  // namespace Spokes

}  // namespace valdorn
