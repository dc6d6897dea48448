#pragma once

#include <cstdint>
#include <vector>

namespace lumora::lx {

// The X keysyms of the key at a Mac virtual key code (Lumora's canonical key codes): letters,
// digits, punctuation, arrows, F1-F20, the keypad and the editing keys, best first. F13-F18
// also name the keysyms Linux keymaps give those keys. Empty for a code the table lacks.
[[nodiscard]] std::vector<unsigned long> keysymsForKeyCode(std::uint32_t keyCode);

// Canonical hot-key modifier masks (command 0x100, shift 0x200, option 0x800, control 0x1000).
inline constexpr std::uint32_t kHotKeyCommand = 0x100;
inline constexpr std::uint32_t kHotKeyShift = 0x200;
inline constexpr std::uint32_t kHotKeyOption = 0x800;
inline constexpr std::uint32_t kHotKeyControl = 0x1000;

// The X modifier state for a canonical mask: command is Mod4 (the Super key), option Mod1
// (Alt). Bits of other keys are ignored.
[[nodiscard]] unsigned int xModifiersFor(std::uint32_t hotKeyModifiers);

}  // namespace lumora::lx
