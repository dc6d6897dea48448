#include <cmath>
#include <cstdio>

#include "sim/SimCore.h"

namespace lumora::sim {

namespace {

using nlohmann::json;

// Gamma entries are shown to 3 decimals: enough to tell curves apart, stable to compare.
double roundTo(double value, double scale) {
    return std::round(value * scale) / scale;
}
constexpr double kGammaScale = 1e3;
// Backlight levels arrive as floats; 6 decimals drop the float noise and keep 1/64 steps.
constexpr double kBacklightScale = 1e6;

// The entries at these indices stand for a whole table.
constexpr int kGammaSamples[] = {0, 128, 255};

json gammaJson(const std::optional<GammaRamps>& table) {
    if (!table) return "identity";
    auto channel = [](const std::vector<float>& entries) {
        json samples = json::array();
        for (int i : kGammaSamples) {
            const auto at = static_cast<std::size_t>(i);
            if (at < entries.size()) samples.push_back(roundTo(entries[at], kGammaScale));
        }
        return samples;
    };
    return json{{"red", channel(table->red)},
                {"green", channel(table->green)},
                {"blue", channel(table->blue)}};
}

std::string vcpKey(std::uint8_t code) {
    char key[8];
    std::snprintf(key, sizeof key, "0x%02x", static_cast<unsigned>(code));
    return key;
}

json displayJson(const SimDisplay& d, DisplayID main) {
    json out{{"id", d.id},
             {"online", d.plugged},
             {"enabled", d.enabled},
             {"main", d.online() && d.id == main},
             {"mode", d.mode},
             {"origin", {std::llround(d.origin.x), std::llround(d.origin.y)}},
             {"mirrorOf", d.mirrorOf},
             {"virtual", d.vendor == kVirtualVendor},
             {"gamma", gammaJson(d.gamma)}};
    if (d.builtin) out["backlight"] = roundTo(d.backlight, kBacklightScale);
    if (d.ddc) {
        json vcp = json::object();
        for (const auto& [code, value] : d.ddc->vcp())
            vcp[vcpKey(code)] = value.first;
        out["vcp"] = vcp;
    }
    return out;
}

}  // namespace

json stateJson(const SimData& data) {
    const DisplayID main = data.mainDisplay();
    json displays = json::array();
    for (const auto& d : data.displays)
        displays.push_back(displayJson(d, main));

    json virtuals = json::array();
    for (const auto& v : data.virtuals) {
        virtuals.push_back(json{{"id", v.id},
                                {"name", v.name},
                                {"product", v.product},
                                {"serial", v.serial},
                                {"hiDPI", v.hiDPI}});
    }

    json assertions = json::array();
    for (const auto& [id, name] : data.power.assertions)
        assertions.push_back(name);

    return json{{"displays", displays},
                {"virtualDisplays", virtuals},
                {"power",
                 {{"assertions", assertions},
                  {"displaySleeps", data.power.displaySleeps},
                  {"systemSleeps", data.power.systemSleeps},
                  {"userActivity", data.power.userActivity}}}};
}

}  // namespace lumora::sim
