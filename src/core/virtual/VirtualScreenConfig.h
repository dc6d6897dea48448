#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace lumora {

// One of the user's virtual screen definitions. Stored as a JSON object with the field names
// as keys; the list of them lives under the defaults key "virtualScreens".
struct VirtualScreenConfig {
    // What a screen made from the panel's presets or by the `virtual` command runs at.
    static constexpr double kDefaultRefresh = 60;
    // "Lumora 1920×1080": the name of a screen the user did not name.
    static std::string defaultName(std::int64_t width, std::int64_t height);

    // Also the virtual display's serial number, so the system keeps its arrangement and mode
    // across runs.
    std::uint32_t id = 0;
    std::string name;
    std::int64_t width = 0;  // points
    std::int64_t height = 0;
    double refresh = kDefaultRefresh;  // Hz
    bool hiDPI = false;                // doubled pixel density
    bool enabled = true;               // the screen should exist

    friend bool operator==(const VirtualScreenConfig&, const VirtualScreenConfig&) = default;

    [[nodiscard]] nlohmann::json toJson() const;
    // Strict: every key present with its exact type (id a JSON integer within 32 bits, sizes
    // JSON integers within 64 bits, refresh any finite number, flags Booleans), or nothing.
    // Unknown keys are ignored. Never throws.
    static std::optional<VirtualScreenConfig> fromJson(const nlohmann::json& json);

    static nlohmann::json listToJson(const std::vector<VirtualScreenConfig>& configs);
    // The whole list or nothing: one bad entry spoils it, as it would the stored list.
    static std::optional<std::vector<VirtualScreenConfig>> listFromJson(const nlohmann::json& json);
    // Arbitrary bytes; never throws.
    static std::optional<std::vector<VirtualScreenConfig>> listFromJsonText(std::string_view text);
};

}  // namespace lumora
