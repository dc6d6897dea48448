#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/VirtualDisplays.h"

namespace lumora {

// A virtual display mode: (width, height) in points.
using VirtualModeSize = std::pair<std::uint32_t, std::uint32_t>;

// Product numbers tell the two kinds of own virtual display apart, so the system never
// confuses a user's screen with a HiDPI backing display of the same serial.
inline constexpr std::uint32_t kVirtualScreenProduct = 1;
inline constexpr std::uint32_t kHiDPIProduct = 2;

// The modes offered for a user's virtual screen of width x height points: the size scaled by
// 1, 7/8, 3/4, 5/8 and 1/2, each side rounded down to even, none below 640 x 360.
std::vector<VirtualModeSize> virtualScreenModes(std::uint32_t width, std::uint32_t height);

// Everything needed to create a virtual screen from just its size: the mode list above, the
// maximum pixels (doubled for HiDPI), a physical size at 110 pixels per inch, product 1.
// Nothing for a zero side, or for a HiDPI size whose doubled pixels do not fit 32 bits.
std::optional<VirtualDisplayDescriptor> planVirtualScreen(const std::string& name,
                                                          std::uint32_t width, std::uint32_t height,
                                                          double refresh, bool hiDPI,
                                                          std::uint32_t serial);

// Whether the platform could possibly create this display: a mode list and nonzero maximum
// pixels. The program's vendor number is stamped on by whoever creates it.
bool isCreatable(const VirtualDisplayDescriptor& descriptor);

}  // namespace lumora
