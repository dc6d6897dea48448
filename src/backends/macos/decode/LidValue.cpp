#include "decode/LidValue.h"

namespace lumora::mac {

std::optional<LidReading> decodeLidValue(std::uint32_t usagePage, std::uint32_t usage,
                                         std::int64_t value) {
    if (usagePage != kSensorUsagePage || usage != kLidAngleUsage) return std::nullopt;
    if (value < 0 || value > kMaxLidAngle) return std::nullopt;
    return LidReading{.angle = value, .closed = std::nullopt};
}

}  // namespace lumora::mac
