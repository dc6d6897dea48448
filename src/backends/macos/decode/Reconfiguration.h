#pragma once

#include <cstdint>
#include <optional>

#include "platform/DisplayServer.h"

namespace lumora::mac {

// Flags of the display reconfiguration callback, as CoreGraphics passes them.
inline constexpr std::uint32_t kBeginConfigurationFlag = 1u << 0;
inline constexpr std::uint32_t kAddFlag = 1u << 4;
inline constexpr std::uint32_t kRemoveFlag = 1u << 5;
inline constexpr std::uint32_t kEnabledFlag = 1u << 8;
inline constexpr std::uint32_t kDisabledFlag = 1u << 9;

// What one callback means for its display. Nothing for the begin phase: the same change comes
// again with its outcome once the reconfiguration is done.
std::optional<DisplayChange> decodeReconfiguration(std::uint32_t flags);

}  // namespace lumora::mac
