#include "model/Settings.h"

#include <cmath>
#include <limits>
#include <string>

#include "base/InRange.h"
#include "model/CommandArguments.h"

namespace lumora {

namespace {

bool allFinite(const ColorAdjust& a) {
    for (double v : {a.dim, a.contrast, a.temperature, a.red, a.green, a.blue, a.gamma}) {
        if (!std::isfinite(v)) return false;
    }
    return true;
}

}  // namespace

ColorMap loadColorAdjust(const Defaults& defaults) {
    auto json = defaults.jsonData(kColorAdjustKey);
    if (!json || !json->is_object()) return {};
    ColorMap color;
    for (const auto& [name, value] : json->items()) {
        auto adjust = ColorAdjust::fromJson(value);
        if (!adjust) return {};
        // Strictly decimal digits: "+1" is not how a display id was ever written.
        if (name.empty() || name.front() == '+') continue;
        const auto id = parseUnsigned(name, std::numeric_limits<std::uint64_t>::max());
        if (auto display = id ? checked<DisplayID>(*id) : std::nullopt) color[*display] = *adjust;
    }
    return color;
}

void saveColorAdjust(Defaults& defaults, const ColorMap& color) {
    nlohmann::json json = nlohmann::json::object();
    for (const auto& [id, adjust] : color) {
        if (!allFinite(adjust)) return;
        json[std::to_string(id)] = adjust.toJson();
    }
    defaults.setJsonData(kColorAdjustKey, json);
}

LidConfig loadLidConfig(const Defaults& defaults) {
    auto json = defaults.jsonData(kLidConfigKey);
    if (!json) return LidConfig{};
    return LidConfig::fromJson(*json).value_or(LidConfig{});
}

void saveLidConfig(Defaults& defaults, const LidConfig& config) {
    const std::string text = config.toJsonText();
    defaults.setData(kLidConfigKey, Defaults::Bytes(text.begin(), text.end()));
}

bool loadPreventSleep(const Defaults& defaults) {
    return defaults.boolean(kPreventSleepKey).value_or(false);
}

bool loadBrightnessKeys(const Defaults& defaults) {
    return defaults.boolean(kBrightnessKeysKey).value_or(true);
}

bool loadRestoreAfterWake(const Defaults& defaults) {
    return defaults.boolean(kRestoreAfterWakeKey).value_or(true);
}

}  // namespace lumora
