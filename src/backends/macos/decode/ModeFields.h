#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/DisplayServer.h"

namespace lumora::mac {

// One display mode's fields as CoreGraphics hands them out, before any conversion.
struct RawModeFields {
    std::int32_t ioModeID = 0;
    std::size_t width = 0;  // points
    std::size_t height = 0;
    std::size_t pixelWidth = 0;
    std::size_t pixelHeight = 0;
    double refresh = 0;
    bool usableForDesktopGUI = false;
};

// The handle the port hands out for a mode: the system's mode number and the pixel size
// together, since a HiDPI mode and its low-resolution duplicate share the number. Stable for
// the same mode; never negative.
std::int32_t modeHandle(std::int32_t ioModeID, std::size_t pixelWidth, std::size_t pixelHeight);

// The mode as the port describes it. A refresh rate that is not a positive finite number
// (built-in panels report 0, a broken mode may report worse) becomes 0, "none reported";
// sizes beyond the signed range saturate instead of wrapping negative.
PlatformMode decodeMode(const RawModeFields& raw);

}  // namespace lumora::mac
