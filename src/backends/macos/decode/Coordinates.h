#pragma once

#include "platform/Types.h"

namespace lumora::mac {

// AppKit places screens and the pointer with the origin at the bottom-left of the primary
// screen (the one holding the menu bar at start) and y growing upwards; display bounds and
// the ports use the top-left of the main display with y growing downwards. primaryHeight is
// the height of that primary screen in points.
Point pointFromAppKit(Point appKit, double primaryHeight);
Rect frameFromAppKit(Rect appKit, double primaryHeight);

}  // namespace lumora::mac
