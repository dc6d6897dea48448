#include "display/ColorAdjust.h"

#include <array>
#include <cmath>

namespace lumora {

namespace {

using Field = double ColorAdjust::*;

struct Key {
    const char* name;
    Field field;
};

constexpr std::array<Key, 7> kKeys{{
    {"dim", &ColorAdjust::dim},
    {"contrast", &ColorAdjust::contrast},
    {"temperature", &ColorAdjust::temperature},
    {"red", &ColorAdjust::red},
    {"green", &ColorAdjust::green},
    {"blue", &ColorAdjust::blue},
    {"gamma", &ColorAdjust::gamma},
}};

}  // namespace

nlohmann::json ColorAdjust::toJson() const {
    nlohmann::json json = nlohmann::json::object();
    for (const auto& key : kKeys)
        json[key.name] = this->*key.field;
    return json;
}

std::optional<ColorAdjust> ColorAdjust::fromJson(const nlohmann::json& json) {
    if (!json.is_object()) return std::nullopt;
    ColorAdjust adjust;
    for (const auto& key : kKeys) {
        auto found = json.find(key.name);
        if (found == json.end() || !found->is_number()) return std::nullopt;
        const double value = found->get<double>();
        if (!std::isfinite(value)) return std::nullopt;
        adjust.*key.field = value;
    }
    return adjust;
}

}  // namespace lumora
