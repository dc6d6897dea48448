#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "adaptive/AdaptiveCurve.h"
#include "adaptive/AdaptiveMode.h"
#include "adaptive/Sun.h"
#include "platform/Defaults.h"

namespace lumora {

// The stored side of adaptive brightness. Every reader falls back to the default for a value
// it cannot decode, and a corrupt entry of one display costs only that display's curve.
inline constexpr const char* kAdaptiveModeKey = "adaptive.mode";
inline constexpr const char* kAdaptiveExcludedKey = "adaptive.excluded";
inline constexpr const char* kAdaptiveCurvesKey = "adaptive.curves";
inline constexpr const char* kAdaptiveLocationKey = "adaptive.location";
inline constexpr const char* kAdaptiveNightColorKey = "adaptive.nightColor";

struct NightColor {
    static constexpr double kDefaultKelvin = 4000;
    static constexpr double kWarmest = 1900;
    static constexpr double kCoolest = 6500;

    bool on = false;
    double kelvin = kDefaultKelvin;

    friend bool operator==(const NightColor&, const NightColor&) = default;
};

// Learned points per display (persistent key) and mode.
using AdaptiveCurves = std::map<std::string, std::map<AdaptiveMode, std::vector<CurvePoint>>>;

// A string naming a mode; off otherwise.
AdaptiveMode loadAdaptiveMode(const Defaults& defaults);
void saveAdaptiveMode(Defaults& defaults, AdaptiveMode mode);
// The persistent keys of the displays that do not take part.
std::set<std::string> loadAdaptiveExcluded(const Defaults& defaults);
void saveAdaptiveExcluded(Defaults& defaults, const std::set<std::string>& keys);
// JSON data {"KEY": {"sync": [[input, level, learned]...], ...}}.
AdaptiveCurves loadAdaptiveCurves(const Defaults& defaults);
void saveAdaptiveCurves(Defaults& defaults, const AdaptiveCurves& curves);
// JSON data {"latitude": …, "longitude": …} within ±90 and ±180.
std::optional<GeoLocation> loadAdaptiveLocation(const Defaults& defaults);
void saveAdaptiveLocation(Defaults& defaults, const GeoLocation& place);
[[nodiscard]] bool validLocation(const GeoLocation& place);
// JSON data {"on": bool, "kelvin": number within the warmest and coolest}.
NightColor loadNightColor(const Defaults& defaults);
void saveNightColor(Defaults& defaults, const NightColor& night);

}  // namespace lumora
