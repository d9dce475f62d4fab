#pragma once

namespace valdorn {

// The colours by which views speak; each has a light and a dark variant, chosen when drawn.
enum class SystemColor { secondary, green, yellow, orange, red, blue };

}  // namespace valdorn
