#include <algorithm>
#include <cmath>

#include "virtual/HiDPI.h"

namespace lumora {

namespace {

// Largest first.
constexpr double kPointFactors[] = {1.0, 0.9, 0.8, 0.75, 2.0 / 3.0, 0.625, 0.6, 0.5625, 0.5};
// The doubled backing store must fit an 8K frame.
constexpr double kMaxBackingSide = 7680;
// Smaller desktops are of no use.
constexpr double kMinPointWidth = 800;

// Rounded half away from zero, then down to even. Works in doubles so that nonsense sizes
// from a broken server cannot overflow; callers bound the result before converting.
double evenPoints(double side, double factor) {
    return 2 * std::floor(std::round(side * factor) / 2);
}

}  // namespace

std::string HiDPI::key(const DisplayServer& server, DisplayID id) {
    return server.persistentKey(id);
}

std::optional<HiDPI::PixelSize> HiDPI::nativeSize(const DisplayServer& server, DisplayID id) {
    std::optional<PixelSize> best;
    double bestArea = 0;
    for (const auto& mode : server.allModes(id)) {
        // In floating point: the product of two 64-bit sides may not fit 64 bits.
        const double area =
            static_cast<double>(mode.pixelWidth) * static_cast<double>(mode.pixelHeight);
        if (!best || area > bestArea) {
            best = PixelSize{mode.pixelWidth, mode.pixelHeight};
            bestArea = area;
        }
    }
    return best;
}

std::vector<HiDPI::PixelSize> HiDPI::pointModes(PixelSize native) {
    std::vector<PixelSize> modes;
    for (double factor : kPointFactors) {
        const double w = evenPoints(static_cast<double>(native.first), factor);
        const double h = evenPoints(static_cast<double>(native.second), factor);
        // A height of no pixels is no mode, whatever a broken server reports.
        if (!(2 * w <= kMaxBackingSide && 2 * h <= kMaxBackingSide && w >= kMinPointWidth &&
              h > 0)) {
            continue;
        }
        const PixelSize size{static_cast<std::int64_t>(w), static_cast<std::int64_t>(h)};
        if (std::find(modes.begin(), modes.end(), size) == modes.end()) modes.push_back(size);
    }
    return modes;
}

}  // namespace lumora
