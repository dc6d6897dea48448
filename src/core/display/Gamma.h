#pragma once

#include <array>
#include <cstddef>
#include <map>

#include "display/ColorAdjust.h"
#include "platform/DisplayServer.h"

namespace lumora {

// The colour curve Lumora computes for one display: 256 points per channel, 0…1. Displays
// take it resampled to the size of their own ramps.
inline constexpr std::size_t kGammaCurvePoints = 256;
struct GammaCurve {
    std::array<float, kGammaCurvePoints> red{};
    std::array<float, kGammaCurvePoints> green{};
    std::array<float, kGammaCurvePoints> blue{};
};

// Software colour: dims, tints and re-contrasts displays by loading their gamma ramps.
// Main thread only.
class Gamma {
  public:
    explicit Gamma(DisplayServer& server) : server_(server) {}

    // Every online display: a ramp for each adjustment that is not the identity, its own
    // colour back for every other display.
    void applyAll(const std::map<DisplayID, ColorAdjust>& adjustments);
    // Every online display back to its own colour.
    void resetAll();

    static void fill(const ColorAdjust& adjust, GammaCurve& curve);
    // The curve at `size` evenly spaced points, linearly interpolated; empty for size 0.
    [[nodiscard]] static GammaRamps resample(const GammaCurve& curve, std::size_t size);

  private:
    DisplayServer& server_;
    GammaCurve scratch_;  // reused by applyAll
};

}  // namespace lumora
