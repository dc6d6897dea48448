#pragma once

#include <optional>
#include <string_view>

namespace lumora {

// What adaptive brightness follows.
enum class AdaptiveMode {
    off,
    sync,      // the built-in display's brightness
    sensor,    // an ambient light sensor
    schedule,  // the sun's elevation at the user's location
};

[[nodiscard]] std::string_view adaptiveModeName(AdaptiveMode mode);
// Exactly one of the names above, lower case.
[[nodiscard]] std::optional<AdaptiveMode> parseAdaptiveMode(std::string_view name);

}  // namespace lumora
