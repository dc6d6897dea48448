#pragma once

#include "sim/World.h"

namespace lumora::sim {

// Fills in every default a world file may leave out: current modes, origins side by side,
// the main display moved to (0,0) with the others keeping their places around it, the cursor
// on the main display's centre, the lid sensor of a laptop. Running it twice changes nothing.
void resolveWorld(World& world);

// Width and height in points of a display's current mode, turned with the display.
Size worldDisplaySize(const WorldDisplay& display);

}  // namespace lumora::sim
