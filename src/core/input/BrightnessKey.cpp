#include "input/BrightnessKey.h"

namespace lumora {

namespace {

constexpr std::int64_t kBrightnessUpCode = 2;
// Clearing bit 16 and below leaves 0x20000 exactly for key codes 2 and 3 with no high bits
// set, so one comparison accepts both brightness keys and nothing else.
constexpr std::int64_t kKeyCodeLowBits = 0x1FFFF;
constexpr std::int64_t kBrightnessKeyPattern = 0x20000;
constexpr int kKeyCodeShift = 16;
constexpr int kKeyStateShift = 8;
constexpr std::int64_t kKeyStateMask = 0xFF;
constexpr std::int64_t kKeyStateDown = 0x0A;

}  // namespace

std::optional<BrightnessKey> decodeBrightnessKey(const SystemDefinedEvent& event) {
    if (event.kind != SystemEventKind::systemDefined) return std::nullopt;
    if (event.subtype != kAuxControlButtonsSubtype) return std::nullopt;
    if ((event.data1 & ~kKeyCodeLowBits) != kBrightnessKeyPattern) return std::nullopt;
    BrightnessKey key;
    key.up = (event.data1 >> kKeyCodeShift) == kBrightnessUpCode;
    // The repeat bit is not looked at: an auto-repeated down steps like a fresh press.
    key.down = ((event.data1 >> kKeyStateShift) & kKeyStateMask) == kKeyStateDown;
    key.fine = event.flags.has(Modifier::option) && event.flags.has(Modifier::shift);
    return key;
}

}  // namespace lumora
