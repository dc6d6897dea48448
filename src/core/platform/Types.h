#pragma once

#include <cstdint>

namespace lumora {

// The platform's display identifier; every per-display map is keyed by it.
using DisplayID = std::uint32_t;

// Vendor number that marks Lumora's own virtual displays ("LM").
inline constexpr std::uint32_t kVirtualVendor = 0x4C4D;

// Global desktop coordinates, y growing downwards: on macOS the origin is the top-left of the
// main display; on X11 and Wayland it is the top-left of the whole desktop (where windows,
// xrandr and the pointer have it), whichever display is main.
struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
    Point origin;
    Size size;
    friend bool operator==(const Rect&, const Rect&) = default;

    // Half-open on both axes, so two displays that touch never both contain a point.
    [[nodiscard]] bool contains(Point p) const {
        return p.x >= origin.x && p.x < origin.x + size.width && p.y >= origin.y &&
               p.y < origin.y + size.height;
    }
};

}  // namespace lumora
