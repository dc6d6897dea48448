#pragma once

#include <cstdint>
#include <initializer_list>

namespace lumora {

// One modifier key. Caps lock and function are carried only so that the code reading the
// flags can show it ignores them.
enum class Modifier : std::uint32_t {
    shift = 1u << 0,
    control = 1u << 1,
    option = 1u << 2,
    command = 1u << 3,
    capsLock = 1u << 4,
    function = 1u << 5,
};

// The modifier keys held during a key event, as a bit set. The bit values are Lumora's own:
// a backend translates its platform's flags into them.
class ModifierFlags {
  public:
    constexpr ModifierFlags() = default;
    constexpr ModifierFlags(std::initializer_list<Modifier> held) {
        for (Modifier m : held)
            bits_ |= static_cast<std::uint32_t>(m);
    }

    [[nodiscard]] constexpr bool has(Modifier m) const {
        return (bits_ & static_cast<std::uint32_t>(m)) != 0;
    }
    [[nodiscard]] constexpr std::uint32_t bits() const { return bits_; }
    [[nodiscard]] static constexpr ModifierFlags fromBits(std::uint32_t bits) {
        ModifierFlags flags;
        flags.bits_ = bits;
        return flags;
    }

    friend constexpr bool operator==(ModifierFlags, ModifierFlags) = default;

  private:
    std::uint32_t bits_ = 0;
};

}  // namespace lumora
