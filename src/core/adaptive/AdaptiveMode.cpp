#include "adaptive/AdaptiveMode.h"

#include <array>
#include <utility>

namespace lumora {

namespace {

constexpr std::array<std::pair<AdaptiveMode, std::string_view>, 4> kNames = {{
    {AdaptiveMode::off, "off"},
    {AdaptiveMode::sync, "sync"},
    {AdaptiveMode::sensor, "sensor"},
    {AdaptiveMode::schedule, "schedule"},
}};

}  // namespace

std::string_view adaptiveModeName(AdaptiveMode mode) {
    for (const auto& [m, name] : kNames) {
        if (m == mode) return name;
    }
    return "off";
}

std::optional<AdaptiveMode> parseAdaptiveMode(std::string_view name) {
    for (const auto& [m, text] : kNames) {
        if (text == name) return m;
    }
    return std::nullopt;
}

}  // namespace lumora
