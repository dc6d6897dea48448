#include "decode/BrightnessKeyDecoder.h"

namespace lumora::mac {

namespace {

// data1 of an auxiliary control button: the key code in bits 16-31, the key state in 8-15.
constexpr int kKeyCodeShift = 16;
constexpr int kKeyStateShift = 8;
constexpr std::int64_t kKeyStateMask = 0xFF;
constexpr std::int64_t kKeyStateDown = 0x0A;
constexpr std::int64_t kBrightnessUpCode = 2;
// With bit 16 and everything below it cleared, exactly the key codes 2 and 3 (and no high
// bits) leave 0x20000: one comparison accepts both brightness keys and nothing else.
constexpr std::int64_t kKeyCodeLowBits = 0x1FFFF;
constexpr std::int64_t kBrightnessKeyPattern = 0x20000;

}  // namespace

std::optional<BrightnessKeyEvent> decodeTappedEvent(const TappedEvent& event) {
    if (event.type == kTapDisabledByTimeout || event.type == kTapDisabledByUserInput) {
        return BrightnessKeyEvent{.kind = BrightnessKeyEvent::Kind::tapDisabled};
    }
    if (event.type != kSystemDefinedEventType) return std::nullopt;
    if (event.subtype != kAuxControlButtonsSubtype) return std::nullopt;
    if ((event.data1 & ~kKeyCodeLowBits) != kBrightnessKeyPattern) return std::nullopt;
    BrightnessKeyEvent key;
    key.up = (event.data1 >> kKeyCodeShift) == kBrightnessUpCode;
    // The repeat bit is not looked at: an auto-repeated down steps like a fresh press.
    key.pressed = ((event.data1 >> kKeyStateShift) & kKeyStateMask) == kKeyStateDown;
    key.fine = (event.modifierFlags & kEventFlagOption) && (event.modifierFlags & kEventFlagShift);
    return key;
}

}  // namespace lumora::mac
