#include "adaptive/AdaptiveSettings.h"

#include <cmath>

namespace lumora {

namespace {

constexpr double kLatitudeLimit = 90;
constexpr double kLongitudeLimit = 180;

std::optional<double> finiteNumber(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number()) return std::nullopt;
    const auto value = found->get<double>();
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

}  // namespace

AdaptiveMode loadAdaptiveMode(const Defaults& defaults) {
    const auto name = defaults.string(kAdaptiveModeKey);
    return name ? parseAdaptiveMode(*name).value_or(AdaptiveMode::off) : AdaptiveMode::off;
}

void saveAdaptiveMode(Defaults& defaults, AdaptiveMode mode) {
    defaults.setString(kAdaptiveModeKey, std::string(adaptiveModeName(mode)));
}

std::set<std::string> loadAdaptiveExcluded(const Defaults& defaults) {
    const auto keys = defaults.stringArray(kAdaptiveExcludedKey);
    return keys ? std::set<std::string>(keys->begin(), keys->end()) : std::set<std::string>{};
}

void saveAdaptiveExcluded(Defaults& defaults, const std::set<std::string>& keys) {
    defaults.setStringArray(kAdaptiveExcludedKey, {keys.begin(), keys.end()});
}

AdaptiveCurves loadAdaptiveCurves(const Defaults& defaults) {
    AdaptiveCurves curves;
    const auto json = defaults.jsonData(kAdaptiveCurvesKey);
    if (!json || !json->is_object()) return curves;
    for (const auto& [key, modes] : json->items()) {
        if (!modes.is_object()) continue;
        for (const auto& [name, points] : modes.items()) {
            const auto mode = parseAdaptiveMode(name);
            auto decoded = AdaptiveCurve::pointsFromJson(points);
            if (mode && *mode != AdaptiveMode::off && decoded) curves[key][*mode] = *decoded;
        }
    }
    return curves;
}

void saveAdaptiveCurves(Defaults& defaults, const AdaptiveCurves& curves) {
    nlohmann::json json = nlohmann::json::object();
    for (const auto& [key, modes] : curves) {
        for (const auto& [mode, points] : modes) {
            json[key][std::string(adaptiveModeName(mode))] = curvePointsJson(points);
        }
    }
    defaults.setJsonData(kAdaptiveCurvesKey, json);
}

bool validLocation(const GeoLocation& place) {
    return std::isfinite(place.latitude) && std::isfinite(place.longitude) &&
           std::abs(place.latitude) <= kLatitudeLimit &&
           std::abs(place.longitude) <= kLongitudeLimit;
}

std::optional<GeoLocation> loadAdaptiveLocation(const Defaults& defaults) {
    const auto json = defaults.jsonData(kAdaptiveLocationKey);
    if (!json || !json->is_object()) return std::nullopt;
    const auto latitude = finiteNumber(*json, "latitude");
    const auto longitude = finiteNumber(*json, "longitude");
    if (!latitude || !longitude) return std::nullopt;
    const GeoLocation place{*latitude, *longitude};
    return validLocation(place) ? std::optional<GeoLocation>(place) : std::nullopt;
}

void saveAdaptiveLocation(Defaults& defaults, const GeoLocation& place) {
    defaults.setJsonData(kAdaptiveLocationKey,
                         {{"latitude", place.latitude}, {"longitude", place.longitude}});
}

NightColor loadNightColor(const Defaults& defaults) {
    NightColor night;
    const auto json = defaults.jsonData(kAdaptiveNightColorKey);
    if (!json || !json->is_object()) return night;
    if (auto on = json->find("on"); on != json->end() && on->is_boolean()) night.on = *on;
    if (auto kelvin = finiteNumber(*json, "kelvin");
        kelvin && *kelvin >= NightColor::kWarmest && *kelvin <= NightColor::kCoolest) {
        night.kelvin = *kelvin;
    }
    return night;
}

void saveNightColor(Defaults& defaults, const NightColor& night) {
    defaults.setJsonData(kAdaptiveNightColorKey, {{"on", night.on}, {"kelvin", night.kelvin}});
}

}  // namespace lumora
