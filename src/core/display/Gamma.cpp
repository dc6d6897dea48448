#include "display/Gamma.h"

#include <cmath>
#include <vector>

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

void Gamma::fill(const ColorAdjust& adjust, GammaCurve& table) {
    const double t = adjust.temperature;
    const double redGain = adjust.red * (t < 0 ? 1 + kCoolRedLoss * t : 1);
    const double greenGain = adjust.green * (1 - kGreenLoss * std::fabs(t));
    const double blueGain = adjust.blue * (t > 0 ? 1 - kWarmBlueLoss * t : 1);
    constexpr double kLast = kGammaCurvePoints - 1;
    for (std::size_t i = 0; i < kGammaCurvePoints; ++i) {
        const double x = static_cast<double>(i) / kLast;
        const double base =
            clamp01(adjust.contrast * (std::pow(x, adjust.gamma) - kMidGrey) + kMidGrey);
        const std::size_t at = i;
        table.red[at] = static_cast<float>(clamp01(adjust.dim * redGain * base));
        table.green[at] = static_cast<float>(clamp01(adjust.dim * greenGain * base));
        table.blue[at] = static_cast<float>(clamp01(adjust.dim * blueGain * base));
    }
}

namespace {

std::vector<float> resampled(const std::array<float, kGammaCurvePoints>& points, std::size_t size) {
    std::vector<float> out(size);
    if (size == 1) out[0] = points.back();
    if (size < 2) return out;
    constexpr double kLastPoint = kGammaCurvePoints - 1;
    for (std::size_t i = 0; i < size; ++i) {
        const double at = static_cast<double>(i) * kLastPoint / static_cast<double>(size - 1);
        const auto below = static_cast<std::size_t>(at);
        const std::size_t above = below + 1 < kGammaCurvePoints ? below + 1 : below;
        const double t = at - static_cast<double>(below);
        out[i] = static_cast<float>(points[below] + t * (points[above] - points[below]));
    }
    return out;
}

}  // namespace

GammaRamps Gamma::resample(const GammaCurve& curve, std::size_t size) {
    return GammaRamps{resampled(curve.red, size), resampled(curve.green, size),
                      resampled(curve.blue, size)};
}

void Gamma::applyAll(const std::map<DisplayID, ColorAdjust>& adjustments) {
    for (DisplayID id : server_.onlineIDs()) {
        auto found = adjustments.find(id);
        const std::size_t size = server_.gammaRampSize(id);
        if (found == adjustments.end() || found->second.isIdentity() || size == 0) {
            server_.resetGamma(id);
            continue;
        }
        fill(found->second, scratch_);
        // A failed load is left alone: the next call sets it again.
        server_.setGamma(id, resample(scratch_, size));
    }
}

void Gamma::resetAll() {
    for (DisplayID id : server_.onlineIDs())
        server_.resetGamma(id);
}

}  // namespace lumora
