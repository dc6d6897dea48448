#pragma once

#include <cstdint>
#include <optional>

#include "platform/LidSensor.h"

namespace lumora::mac {

// The lid-angle sensor as HID names it: a device of the sensor usage page with the lid usage,
// and on it the element that carries the hinge angle in degrees.
inline constexpr std::uint32_t kSensorUsagePage = 0x20;
inline constexpr std::uint32_t kLidSensorUsage = 0x8A;
inline constexpr std::uint32_t kLidAngleUsage = 0x47F;

// Angles outside a full turn are not a hinge position but a sensor glitch.
inline constexpr std::int64_t kMaxLidAngle = 360;

// The reading one HID value gives: the angle for the lid-angle element, nothing for any other
// element or for a value no hinge can have (the last good reading then stays).
std::optional<LidReading> decodeLidValue(std::uint32_t usagePage, std::uint32_t usage,
                                         std::int64_t value);

}  // namespace lumora::mac
