#include "display/ColorAdjust.h"

#include <array>

#include "base/JsonRead.h"

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
    ColorAdjust adjust;
    for (const auto& key : kKeys) {
        if (!jsonread::assign(adjust.*key.field, jsonread::number(json, key.name))) {
            return std::nullopt;
        }
    }
    return adjust;
}

}  // namespace lumora
