#pragma once

#include <optional>

#include <nlohmann/json.hpp>

namespace lumora {

// The software colour settings of one display, applied through its gamma table.
struct ColorAdjust {
    double dim = 1;          // output multiplier; smaller is darker
    double contrast = 1;     // slope around mid-grey
    double temperature = 0;  // positive warms (less blue), negative cools (less red)
    double red = 1;
    double green = 1;
    double blue = 1;
    double gamma = 1;  // exponent of the input ramp

    // Every field exactly at its default.
    [[nodiscard]] bool isIdentity() const { return *this == ColorAdjust{}; }

    [[nodiscard]] nlohmann::json toJson() const;
    // Nothing unless `json` is an object holding all seven keys as finite numbers.
    [[nodiscard]] static std::optional<ColorAdjust> fromJson(const nlohmann::json& json);

    friend bool operator==(const ColorAdjust&, const ColorAdjust&) = default;
};

}  // namespace lumora
