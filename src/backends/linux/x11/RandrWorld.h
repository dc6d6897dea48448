#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "edid/Edid.h"

namespace lumora::lx {

// RandR object identifiers (outputs, CRTCs, modes) as Xlib hands them out.
using XId = unsigned long;

// RandR rotation bits; reflections are carried along but not reported.
inline constexpr std::uint16_t kRotate0 = 1;
inline constexpr std::uint16_t kRotate90 = 2;  // counter-clockwise, "xrandr --rotate left"
inline constexpr std::uint16_t kRotate180 = 4;
inline constexpr std::uint16_t kRotate270 = 8;
inline constexpr std::uint16_t kRotationBits = 0x0F;

struct ModeTiming {
    XId id = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint64_t dotClock = 0;  // Hz
    std::uint32_t hTotal = 0;
    std::uint32_t vTotal = 0;
    std::uint64_t flags = 0;
    friend bool operator==(const ModeTiming&, const ModeTiming&) = default;
};

struct CrtcState {
    XId id = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::uint32_t width = 0;  // on screen, rotation applied
    std::uint32_t height = 0;
    XId mode = 0;  // 0: off
    std::uint16_t rotation = kRotate0;
    std::vector<XId> outputs{};
    std::vector<XId> possible{};
    std::size_t gammaSize = 0;
    friend bool operator==(const CrtcState&, const CrtcState&) = default;
};

struct OutputState {
    XId id = 0;
    std::string name;
    bool connected = false;
    XId crtc = 0;
    std::vector<XId> crtcs{};  // the CRTCs this output can use
    std::vector<XId> modes{};  // preferred ones first
    std::uint64_t mmWidth = 0;
    std::uint64_t mmHeight = 0;
    std::optional<EdidInfo> edid{};
    friend bool operator==(const OutputState&, const OutputState&) = default;
};

// Everything RandR says about one screen, read in one go.
struct RandrWorld {
    std::uint64_t configTimestamp = 0;
    std::vector<OutputState> outputs{};  // in the server's order
    std::vector<CrtcState> crtcs{};
    std::vector<ModeTiming> modes{};
    XId primary = 0;
    std::uint32_t screenWidth = 0;
    std::uint32_t screenHeight = 0;

    [[nodiscard]] const ModeTiming* mode(XId id) const;
    [[nodiscard]] const CrtcState* crtc(XId id) const;
    [[nodiscard]] const OutputState* output(XId id) const;
};

// Hz from the timings: dot clock over the whole frame, doubled for interlaced modes (two
// fields a frame) and halved for double-scanned ones; 0 when the timings are missing.
[[nodiscard]] double refreshRate(const ModeTiming& mode);

// Width and height as placed on the screen: swapped for a quarter turn.
[[nodiscard]] std::pair<std::uint32_t, std::uint32_t> rotatedSize(std::uint32_t width,
                                                                  std::uint32_t height,
                                                                  std::uint16_t rotation);

// Degrees clockwise, as the other platforms report a display's rotation: RandR turns
// counter-clockwise, so its 90 ("left") is 270 here.
[[nodiscard]] double rotationDegrees(std::uint16_t rotation);

}  // namespace lumora::lx
