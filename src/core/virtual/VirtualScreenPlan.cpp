#include "virtual/VirtualScreenPlan.h"

#include <limits>

namespace lumora {

namespace {

// Largest first: the first mode is the one the display starts in.
constexpr double kScaleFactors[] = {1.0, 0.875, 0.75, 0.625, 0.5};
// No mode below 640 x 360: smaller desktops are of no use.
constexpr std::uint32_t kMinWidthExclusive = 639;
constexpr std::uint32_t kMinHeightExclusive = 359;
// 25.4 / 110: millimetres per pixel of a 110 pixels-per-inch panel. A HiDPI screen has twice
// the pixels on the same physical size, so half of it.
constexpr double kMillimetresPerPixel = 0.2309090909090909;
constexpr double kMillimetresPerPixelHiDPI = 0.11545454545454545;

constexpr std::uint32_t evenBelow(std::uint32_t value) {
    return value & ~std::uint32_t{1};
}

}  // namespace

std::vector<VirtualModeSize> virtualScreenModes(std::uint32_t width, std::uint32_t height) {
    std::vector<VirtualModeSize> modes;
    for (double factor : kScaleFactors) {
        // Products of a 32-bit value and a factor <= 1 always fit back into 32 bits.
        const auto w = static_cast<std::uint32_t>(width * factor);
        const auto h = static_cast<std::uint32_t>(height * factor);
        if (w > kMinWidthExclusive && h > kMinHeightExclusive) {
            modes.emplace_back(evenBelow(w), evenBelow(h));
        }
    }
    return modes;
}

std::optional<VirtualDisplayDescriptor> planVirtualScreen(const std::string& name,
                                                          std::uint32_t width, std::uint32_t height,
                                                          double refresh, bool hiDPI,
                                                          std::uint32_t serial) {
    if (width == 0 || height == 0) return std::nullopt;
    constexpr std::uint32_t kLargestDoublable = std::numeric_limits<std::uint32_t>::max() / 2;
    if (hiDPI && (width > kLargestDoublable || height > kLargestDoublable)) return std::nullopt;

    VirtualDisplayDescriptor d;
    d.name = name;
    d.modes = virtualScreenModes(width, height);
    d.maxPixelsWide = hiDPI ? width << 1 : width;
    d.maxPixelsHigh = hiDPI ? height << 1 : height;
    const double perPixel = hiDPI ? kMillimetresPerPixelHiDPI : kMillimetresPerPixel;
    d.sizeMillimeters = Size{d.maxPixelsWide * perPixel, d.maxPixelsHigh * perPixel};
    d.refresh = refresh;
    d.hiDPI = hiDPI;
    d.vendor = kVirtualVendor;
    d.product = kVirtualScreenProduct;
    d.serial = serial;
    return d;
}

bool isCreatable(const VirtualDisplayDescriptor& descriptor) {
    return descriptor.maxPixelsWide != 0 && descriptor.maxPixelsHigh != 0 &&
           !descriptor.modes.empty();
}

}  // namespace lumora
