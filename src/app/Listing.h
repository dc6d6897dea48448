#pragma once

#include <iosfwd>

#include "platform/AVServices.h"
#include "platform/Scheduler.h"

namespace lumora {
class Displays;
class Brightness;
}  // namespace lumora

namespace lumora::app {

// `lumora --list`: everything Lumora sees, the first diagnostic to run on new hardware.
// Reads DDC/CI over the wire, so it takes a Sleeper for the protocol's pauses.
void printListing(std::ostream& out, Displays& displays, Brightness& brightness,
                  AVServices& avServices, Sleeper& sleeper);

}  // namespace lumora::app
