#pragma once

#include <iosfwd>

#include <nlohmann/json.hpp>

#include "platform/Platform.h"
#include "platform/Scheduler.h"

namespace lumora {
class Brightness;
class Displays;
}  // namespace lumora

namespace lumora::app {

// `lumora --list`: everything Lumora sees, the first diagnostic to run on new hardware.
// Reads DDC/CI over the wire, so it takes a Sleeper for the protocol's pauses.
//
// The document (`--list --json`; every key is always there, null when it does not apply):
//   {"platform": name, "capabilities": {"setMode": bool, ...every capability},
//    "displays": [{"id", "name", "builtin", "main", "virtual", "online", "asleep", "vendor",
//                  "model", "serial", "rotation",
//                  "mode": mode or null,
//                  "modes": [mode...] (empty when offline),
//                  "backlight": 0-1, null (not built-in, offline, or unreadable),
//                  "ddc": null (no channel, or not an external online monitor) or
//                         {"brightness"|"contrast"|"volume": {"value", "max"} or null}}]}
//   mode: {"id", "width", "height", "pixelWidth", "pixelHeight", "refresh", "hidpi", "label"}
nlohmann::json listing(Platform& platform, Displays& displays, Brightness& brightness,
                       Sleeper& sleeper);

// The same document as text for people.
void printListing(std::ostream& out, const nlohmann::json& listing);

}  // namespace lumora::app
