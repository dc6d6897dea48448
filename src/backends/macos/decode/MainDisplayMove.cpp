#include "decode/MainDisplayMove.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumora::mac {

namespace {

std::optional<std::int32_t> toCoordinate(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    // Display bounds are whole points; rounding only absorbs floating-point noise.
    const double rounded = std::round(value);
    if (rounded < std::numeric_limits<std::int32_t>::min() ||
        rounded > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(rounded);
}

}  // namespace

std::optional<std::vector<OriginMove>> originsForMain(std::span<const DisplayOrigin> displays,
                                                      DisplayID newMain) {
    const auto target = std::find_if(displays.begin(), displays.end(),
                                     [newMain](const DisplayOrigin& d) { return d.id == newMain; });
    if (target == displays.end()) return std::nullopt;
    const Point offset = target->origin;
    std::vector<OriginMove> moves;
    moves.reserve(displays.size());
    for (const DisplayOrigin& d : displays) {
        auto x = toCoordinate(d.origin.x - offset.x);
        auto y = toCoordinate(d.origin.y - offset.y);
        if (!x || !y) return std::nullopt;
        moves.push_back({d.id, *x, *y});
    }
    return moves;
}

}  // namespace lumora::mac
