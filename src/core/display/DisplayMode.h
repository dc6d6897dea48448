#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/DisplayServer.h"

namespace lumora {

// One display mode as the rest of the program sees it.
struct DisplayMode {
    std::int32_t id = 0;     // the display server's mode number; identity in lists
    std::int64_t width = 0;  // points
    std::int64_t height = 0;
    std::int64_t pixelWidth = 0;
    std::int64_t pixelHeight = 0;
    double refresh = 0;  // Hz; 0 for panels that report none

    // Only the widths are compared; heights are not consulted.
    [[nodiscard]] bool hiDPI() const { return width < pixelWidth; }
    // "1512×982 HiDPI · 120 Hz"; the refresh suffix only when there is a refresh.
    [[nodiscard]] std::string label() const;

    // A refresh that is not a finite number is taken as "none reported".
    [[nodiscard]] static DisplayMode from(const PlatformMode& mode);

    friend bool operator==(const DisplayMode&, const DisplayMode&) = default;
};

// The modes a user may pick: usable ones only, largest first (HiDPI before low resolution,
// then faster refresh), without the duplicates the server lists.
std::vector<DisplayMode> selectableModes(const std::vector<PlatformMode>& platformModes);

// All six fields in declaration order; std::hash<DisplayMode> uses it.
std::size_t hashOf(const DisplayMode& mode);

}  // namespace lumora

template <>
struct std::hash<lumora::DisplayMode> {
    std::size_t operator()(const lumora::DisplayMode& mode) const noexcept;
};
