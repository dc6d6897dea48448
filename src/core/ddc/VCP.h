#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumora {

// Values of the power control (VCP::power): on, and standby.
inline constexpr std::uint16_t kDdcPowerOn = 0x01;
inline constexpr std::uint16_t kDdcPowerStandby = 0x04;

// The MCCS control codes ("VCP features") Lumora reads and sets over DDC/CI.
enum class VCP : std::uint8_t {
    brightness = 0x10,
    contrast = 0x12,
    redGain = 0x16,
    greenGain = 0x18,
    blueGain = 0x1A,
    input = 0x60,
    volume = 0x62,
    mute = 0x8D,
    power = 0xD6,
};

inline constexpr std::array<VCP, 9> kAllVCP = {
    VCP::brightness, VCP::contrast, VCP::redGain, VCP::greenGain, VCP::blueGain,
    VCP::input,      VCP::volume,   VCP::mute,    VCP::power,
};

// Nothing for a code Lumora does not use.
std::optional<VCP> vcpFromCode(std::uint8_t code);
std::uint8_t code(VCP vcp);
// The case name: "brightness", "redGain", ...
std::string_view name(VCP vcp);
// "0x10", "0xd6", "0xf": how logs and stored settings write a control code.
std::string hexCode(std::uint8_t code);

// An input source offered for VCP::input, with the value the monitor expects.
struct DdcInput {
    std::string_view label;
    std::uint16_t value;
};

inline constexpr std::array<DdcInput, 7> ddcInputs = {{
    {"DisplayPort 1", 0x0F},
    {"DisplayPort 2", 0x10},
    {"HDMI 1", 0x11},
    {"HDMI 2", 0x12},
    {"USB-C", 0x1B},
    {"DVI 1", 0x03},
    {"VGA 1", 0x01},
}};

}  // namespace lumora
