#pragma once

#include <cstdint>
#include <optional>

#include "platform/Input.h"

namespace lumora {

// A brightness key as carried by a system-defined event (subtype 8): data1 holds the key code
// in bits 16-31 (2 up, 3 down) and the key state in bits 8-15 (0x0A down, 0x0B up).
struct BrightnessKey {
    bool up = false;    // brightness up; otherwise down
    bool down = false;  // key down (auto-repeat included); otherwise up or anything else
    bool fine = false;  // option and shift both held: a fine step

    friend bool operator==(const BrightnessKey&, const BrightnessKey&) = default;
};

inline constexpr std::int32_t kAuxControlButtonsSubtype = 8;

// Nothing for any other event: other kinds, other subtypes, other key codes (volume, media).
std::optional<BrightnessKey> decodeBrightnessKey(const SystemDefinedEvent& event);

}  // namespace lumora
