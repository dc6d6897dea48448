#pragma once

#include <optional>
#include <vector>

#include "platform/DisplayServer.h"

namespace lumora::mac {

// AppKit's screens and pointer, turned into global top-left coordinates. Main thread only.
std::vector<Screen> appKitScreens();
std::optional<Point> appKitPointer();

}  // namespace lumora::mac
