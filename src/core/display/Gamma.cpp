#include "display/Gamma.h"

#include <cmath>

namespace lumora {

namespace {

// Contrast pivots around mid-grey.
constexpr double kMidGrey = 0.5;
// Per unit of temperature: warming takes blue down, cooling takes red down, and green drops
// either way. The asymmetry is deliberate: it keeps warm settings from turning orange.
constexpr double kWarmBlueLoss = 0.45;
constexpr double kCoolRedLoss = 0.25;
constexpr double kGreenLoss = 0.12;

// Also maps NaN (e.g. 0 × infinity from an extreme exponent) to 0.
double clamp01(double v) {
    if (!(v > 0)) return 0;
    return v > 1 ? 1 : v;
}

}  // namespace

void Gamma::fill(const ColorAdjust& adjust, GammaTable& table) {
    const double t = adjust.temperature;
    const double redGain = adjust.red * (t < 0 ? 1 + kCoolRedLoss * t : 1);
    const double greenGain = adjust.green * (1 - kGreenLoss * std::fabs(t));
    const double blueGain = adjust.blue * (t > 0 ? 1 - kWarmBlueLoss * t : 1);
    constexpr double kLast = kGammaTableSize - 1;
    for (int i = 0; i < kGammaTableSize; ++i) {
        const double x = i / kLast;
        const double base =
            clamp01(adjust.contrast * (std::pow(x, adjust.gamma) - kMidGrey) + kMidGrey);
        const auto at = static_cast<std::size_t>(i);
        table.red[at] = static_cast<float>(clamp01(adjust.dim * redGain * base));
        table.green[at] = static_cast<float>(clamp01(adjust.dim * greenGain * base));
        table.blue[at] = static_cast<float>(clamp01(adjust.dim * blueGain * base));
    }
}

GammaTable Gamma::table(const ColorAdjust& adjust) {
    GammaTable result;
    fill(adjust, result);
    return result;
}

void Gamma::applyAll(const std::map<DisplayID, ColorAdjust>& adjustments) {
    server_.restoreColorProfiles();
    for (const auto& [id, adjust] : adjustments) {
        if (adjust.isIdentity()) continue;
        fill(adjust, scratch_);
        // A failed load is left alone: the next call starts from a restore again.
        server_.setTransferTable(id, scratch_);
    }
}

void Gamma::resetAll() {
    server_.restoreColorProfiles();
}

}  // namespace lumora
