#include "decode/ModeFields.h"

#include <cmath>
#include <limits>

namespace lumora::mac {

namespace {

std::int64_t toSigned(std::size_t value) {
    constexpr auto kMax = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());
    return value > kMax ? std::numeric_limits<std::int64_t>::max()
                        : static_cast<std::int64_t>(value);
}

}  // namespace

PlatformMode decodeMode(const RawModeFields& raw) {
    PlatformMode mode;
    mode.id = raw.ioModeID;
    mode.width = toSigned(raw.width);
    mode.height = toSigned(raw.height);
    mode.pixelWidth = toSigned(raw.pixelWidth);
    mode.pixelHeight = toSigned(raw.pixelHeight);
    mode.refresh = std::isfinite(raw.refresh) && raw.refresh > 0 ? raw.refresh : 0;
    mode.usable = raw.usableForDesktopGUI;
    return mode;
}

}  // namespace lumora::mac
