#include "display/DisplayMode.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "base/NumberText.h"

namespace lumora {

namespace {

// The fractional part of the golden ratio in 64 bits: spreads the bits of each combined hash.
constexpr std::size_t kHashSpread = 0x9e3779b97f4a7c15ULL;

std::size_t hashCombine(std::size_t seed, std::size_t value) {
    return seed ^ (value + kHashSpread + (seed << 6) + (seed >> 2));
}

// -0.0 equals 0.0, so both must hash alike.
std::size_t hashRefresh(double refresh) {
    return std::hash<double>{}(refresh == 0 ? 0.0 : refresh);
}

constexpr const char* kTimes = "\u00D7";
constexpr const char* kRefreshSeparator = " \u00B7 ";

// Width, height, pixel width and the truncated refresh: what makes two listed modes the
// same choice for the user. Pixel height and mode number are deliberately left out.
struct DedupKey {
    std::int64_t width;
    std::int64_t height;
    std::int64_t pixelWidth;
    double refresh;  // already truncated; compared as a number so no range can overflow
    bool operator==(const DedupKey&) const = default;
};

struct DedupKeyHash {
    std::size_t operator()(const DedupKey& k) const noexcept {
        std::size_t h = std::hash<std::int64_t>{}(k.width);
        h = hashCombine(h, std::hash<std::int64_t>{}(k.height));
        h = hashCombine(h, std::hash<std::int64_t>{}(k.pixelWidth));
        return hashCombine(h, hashRefresh(k.refresh));
    }
};

// In floating point so that absurd sizes from a broken server cannot overflow.
double area(const DisplayMode& m) {
    return static_cast<double>(m.width) * static_cast<double>(m.height);
}

bool listedBefore(const DisplayMode& a, const DisplayMode& b) {
    const double areaA = area(a);
    const double areaB = area(b);
    if (areaA != areaB) return areaA > areaB;
    if (a.hiDPI() != b.hiDPI()) return a.hiDPI();
    return a.refresh > b.refresh;
}

}  // namespace

std::string DisplayMode::label() const {
    std::string text = std::to_string(width) + kTimes + std::to_string(height);
    if (hiDPI()) text += " HiDPI";
    if (refresh > 0) text += kRefreshSeparator + wholeNumberText(refresh) + " Hz";
    return text;
}

DisplayMode DisplayMode::from(const PlatformMode& mode) {
    return DisplayMode{mode.id,          mode.width,
                       mode.height,      mode.pixelWidth,
                       mode.pixelHeight, std::isfinite(mode.refresh) ? mode.refresh : 0.0};
}

std::vector<DisplayMode> selectableModes(const std::vector<PlatformMode>& platformModes) {
    std::vector<DisplayMode> modes;
    modes.reserve(platformModes.size());
    for (const auto& mode : platformModes) {
        if (mode.usable) modes.push_back(DisplayMode::from(mode));
    }
    std::stable_sort(modes.begin(), modes.end(), listedBefore);

    std::unordered_set<DedupKey, DedupKeyHash> seen;
    seen.reserve(modes.size());
    std::vector<DisplayMode> unique;
    unique.reserve(modes.size());
    for (const auto& mode : modes) {
        DedupKey key{mode.width, mode.height, mode.pixelWidth, std::trunc(mode.refresh)};
        if (seen.insert(key).second) unique.push_back(mode);
    }
    return unique;
}

std::size_t hashOf(const DisplayMode& mode) {
    std::size_t h = std::hash<std::int32_t>{}(mode.id);
    h = hashCombine(h, std::hash<std::int64_t>{}(mode.width));
    h = hashCombine(h, std::hash<std::int64_t>{}(mode.height));
    h = hashCombine(h, std::hash<std::int64_t>{}(mode.pixelWidth));
    h = hashCombine(h, std::hash<std::int64_t>{}(mode.pixelHeight));
    return hashCombine(h, hashRefresh(mode.refresh));
}

}  // namespace lumora

std::size_t std::hash<lumora::DisplayMode>::operator()(
    const lumora::DisplayMode& mode) const noexcept {
    return lumora::hashOf(mode);
}
