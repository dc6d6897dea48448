#pragma once

#include <cstdint>

namespace lumora {

// Hardware virtual key codes as the keyboard reports them (the macOS codes; the sim and the
// other backends use the same numbers). Only the keys Lumora names are listed.
inline constexpr std::uint32_t kKeyA = 0;
inline constexpr std::uint32_t kKeyH = 4;
inline constexpr std::uint32_t kKeyB = 11;
inline constexpr std::uint32_t kKeyReturn = 36;
inline constexpr std::uint32_t kKeySpace = 49;
inline constexpr std::uint32_t kKeyDelete = 51;
inline constexpr std::uint32_t kKeyEscape = 53;
inline constexpr std::uint32_t kKeyF5 = 96;
inline constexpr std::uint32_t kKeyF6 = 97;
inline constexpr std::uint32_t kKeyF7 = 98;
inline constexpr std::uint32_t kKeyF3 = 99;
inline constexpr std::uint32_t kKeyF4 = 118;
inline constexpr std::uint32_t kKeyF2 = 120;
inline constexpr std::uint32_t kKeyF1 = 122;
inline constexpr std::uint32_t kKeyLeftArrow = 123;
inline constexpr std::uint32_t kKeyRightArrow = 124;
inline constexpr std::uint32_t kKeyDownArrow = 125;
inline constexpr std::uint32_t kKeyUpArrow = 126;

// Modifier masks in the hot-key encoding, the form stored in Shortcut::modifiers and handed
// unchanged to the hot-key registration.
inline constexpr std::uint32_t kMaskCommand = 0x100;
inline constexpr std::uint32_t kMaskShift = 0x200;
inline constexpr std::uint32_t kMaskOption = 0x800;
inline constexpr std::uint32_t kMaskControl = 0x1000;

}  // namespace lumora
