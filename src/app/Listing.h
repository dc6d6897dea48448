#pragma once

#include <iosfwd>

#include "platform/Platform.h"
#include "platform/Scheduler.h"

namespace lumora {
class Displays;
class Brightness;
}  // namespace lumora

namespace lumora::app {

// `lumora --list`: everything Lumora sees, the first diagnostic to run on new hardware.
// Reads DDC/CI over the wire, so it takes a Sleeper for the protocol's pauses.
void printListing(std::ostream& out, Platform& platform, Displays& displays, Brightness& brightness,
                  Sleeper& sleeper);

}  // namespace lumora::app
