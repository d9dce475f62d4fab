#pragma once

class QColor;
class QPainter;

namespace valdorn {

// The wheel of spokes that says that something is going on. Main thread only.
namespace Spokes {

// How many there are, and so how many positions one turn has.
inline constexpr int count = 8;

// How wide spokes are, as a share of the radius: that of the wheel itself, and of an outline that
// shows around it.
inline constexpr double thin = 0.2;
inline constexpr double wide = 0.38;

// Draws the wheel around the painter's origin, with the radius in the painter's units. The spoke at
// `position` (0 to `count` - 1) is the strongest, and they fade behind it.
void draw(QPainter& painter, int position, double radius, double width, const QColor& color);

}  // namespace Spokes

}  // namespace valdorn
