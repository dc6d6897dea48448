#pragma once

#include <cstdint>
#include <optional>

#include "platform/Input.h"

namespace lumora::mac {

// Event types the brightness-key tap sees: system-defined events (media and brightness keys
// among them), and the two notifications by which the system says it switched the tap off.
inline constexpr std::uint32_t kSystemDefinedEventType = 14;
inline constexpr std::uint32_t kTapDisabledByTimeout = 0xFFFFFFFE;
inline constexpr std::uint32_t kTapDisabledByUserInput = 0xFFFFFFFF;

// Subtype of system-defined events that carry the auxiliary control buttons.
inline constexpr std::int16_t kAuxControlButtonsSubtype = 8;

// Modifier bits of the event flags (the same bits in the tapped event and its AppKit form).
inline constexpr std::uint64_t kEventFlagShift = 1u << 17;
inline constexpr std::uint64_t kEventFlagOption = 1u << 19;

// One tapped event, reduced to the fields decoding needs: the event type and, for
// system-defined events, the AppKit event's subtype, data1 and modifier flags as they are.
struct TappedEvent {
    std::uint32_t type = 0;
    std::int16_t subtype = 0;
    std::int64_t data1 = 0;
    std::uint64_t modifierFlags = 0;
};

// A brightness key going down (auto-repeat included) or up, or the tap switched off. Nothing
// for everything else: other event types and subtypes, volume and other media keys.
std::optional<BrightnessKeyEvent> decodeTappedEvent(const TappedEvent& event);

}  // namespace lumora::mac
