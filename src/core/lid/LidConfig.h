#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace lumora {

// The user's tuning of the lid feature. Stored as JSON under the defaults key "lidConfig".
struct LidConfig {
    // A hysteresis band of 5 to 15 degrees keeps a lid resting near one angle from flapping.
    std::int64_t closeAngle = 5;  // degrees; at or below counts as closing
    std::int64_t openAngle = 15;  // degrees; at or above means open at once
    double closeDebounce = 1.5;   // seconds at or below closeAngle before the lid counts closed
    double sleepDelay = 600;      // seconds closed alone until system sleep; <= 0 disables it
    double wakeSleepDelay = 60;   // seconds to system sleep after waking closed alone
    double panelRetry = 5;        // minimum seconds between two panel on/off attempts
    double resleepInterval = 1;   // minimum seconds between two display-sleep commands
    bool turnOffPanelWithExternal = true;        // closed + external: work on the external only
    bool dimWhenClosed = true;                   // dim the panel to zero while closed alone
    bool disconnectBuiltinWhenExternal = false;  // open + external: keep the panel switched off

    friend bool operator==(const LidConfig&, const LidConfig&) = default;

    // The compact JSON text of all ten keys in declaration order: the bytes to store.
    [[nodiscard]] std::string toJsonText() const;

    // Strict: every key present with its exact type (angles JSON integers within 64 bits,
    // durations finite JSON numbers, flags Booleans), or nothing at all. Unknown keys are
    // ignored. Never throws.
    static std::optional<LidConfig> fromJson(const nlohmann::json& json);
    // Arbitrary bytes: anything that is not such a JSON object yields nothing. Never throws.
    static std::optional<LidConfig> fromJsonText(std::string_view text);

    // One line, "name=value" for every field in declaration order, numbers in their shortest
    // exact form: "closeAngle=5 openAngle=15 closeDebounce=1.5 sleepDelay=600 ...".
    [[nodiscard]] std::string describe() const;
};

}  // namespace lumora
