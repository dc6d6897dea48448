#include "decode/ModeFields.h"

#include <cmath>
#include <initializer_list>
#include <limits>

namespace lumora::mac {

namespace {

std::int64_t toSigned(std::size_t value) {
    constexpr auto kMax = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());
    return value > kMax ? std::numeric_limits<std::int64_t>::max()
                        : static_cast<std::int64_t>(value);
}

}  // namespace

std::int32_t modeHandle(std::int32_t ioModeID, std::size_t pixelWidth, std::size_t pixelHeight) {
    // FNV-1a over the three values: a display has a few hundred modes at most, so a clash of
    // 31-bit handles is out of reach in practice.
    constexpr std::uint32_t kOffsetBasis = 2166136261U;
    constexpr std::uint32_t kPrime = 16777619U;
    constexpr std::uint32_t kNonNegative = 0x7FFFFFFFU;
    std::uint32_t hash = kOffsetBasis;
    for (std::uint64_t value :
         {static_cast<std::uint64_t>(static_cast<std::uint32_t>(ioModeID)),
          static_cast<std::uint64_t>(pixelWidth), static_cast<std::uint64_t>(pixelHeight)}) {
        for (int byte = 0; byte < 8; ++byte) {
            hash ^= static_cast<std::uint32_t>((value >> (8 * byte)) & 0xFFU);
            hash *= kPrime;
        }
    }
    return static_cast<std::int32_t>(hash & kNonNegative);
}

PlatformMode decodeMode(const RawModeFields& raw) {
    PlatformMode mode;
    mode.id = modeHandle(raw.ioModeID, raw.pixelWidth, raw.pixelHeight);
    mode.width = toSigned(raw.width);
    mode.height = toSigned(raw.height);
    mode.pixelWidth = toSigned(raw.pixelWidth);
    mode.pixelHeight = toSigned(raw.pixelHeight);
    mode.refresh = std::isfinite(raw.refresh) && raw.refresh > 0 ? raw.refresh : 0;
    mode.usable = raw.usableForDesktopGUI;
    return mode;
}

}  // namespace lumora::mac
