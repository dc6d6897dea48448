#include "lid/LidConfig.h"

#include "base/JsonRead.h"
#include "base/NumberText.h"

namespace lumora {

namespace {

constexpr const char* kCloseAngle = "closeAngle";
constexpr const char* kOpenAngle = "openAngle";
constexpr const char* kCloseDebounce = "closeDebounce";
constexpr const char* kSleepDelay = "sleepDelay";
constexpr const char* kWakeSleepDelay = "wakeSleepDelay";
constexpr const char* kPanelRetry = "panelRetry";
constexpr const char* kResleepInterval = "resleepInterval";
constexpr const char* kTurnOffPanelWithExternal = "turnOffPanelWithExternal";
constexpr const char* kDimWhenClosed = "dimWhenClosed";
constexpr const char* kDisconnectBuiltinWhenExternal = "disconnectBuiltinWhenExternal";

nlohmann::ordered_json toJson(const LidConfig& c) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json[kCloseAngle] = c.closeAngle;
    json[kOpenAngle] = c.openAngle;
    json[kCloseDebounce] = c.closeDebounce;
    json[kSleepDelay] = c.sleepDelay;
    json[kWakeSleepDelay] = c.wakeSleepDelay;
    json[kPanelRetry] = c.panelRetry;
    json[kResleepInterval] = c.resleepInterval;
    json[kTurnOffPanelWithExternal] = c.turnOffPanelWithExternal;
    json[kDimWhenClosed] = c.dimWhenClosed;
    json[kDisconnectBuiltinWhenExternal] = c.disconnectBuiltinWhenExternal;
    return json;
}

}  // namespace

std::string LidConfig::toJsonText() const {
    return toJson(*this).dump();
}

std::optional<LidConfig> LidConfig::fromJson(const nlohmann::json& json) {
    using namespace jsonread;
    // Angles are integers (5.0 is the wrong type); durations any finite number.
    LidConfig c;
    const bool ok =
        assign(c.closeAngle, integer(json, kCloseAngle)) &&
        assign(c.openAngle, integer(json, kOpenAngle)) &&
        assign(c.closeDebounce, number(json, kCloseDebounce)) &&
        assign(c.sleepDelay, number(json, kSleepDelay)) &&
        assign(c.wakeSleepDelay, number(json, kWakeSleepDelay)) &&
        assign(c.panelRetry, number(json, kPanelRetry)) &&
        assign(c.resleepInterval, number(json, kResleepInterval)) &&
        assign(c.turnOffPanelWithExternal, boolean(json, kTurnOffPanelWithExternal)) &&
        assign(c.dimWhenClosed, boolean(json, kDimWhenClosed)) &&
        assign(c.disconnectBuiltinWhenExternal, boolean(json, kDisconnectBuiltinWhenExternal));
    if (!ok) return std::nullopt;
    return c;
}

std::optional<LidConfig> LidConfig::fromJsonText(std::string_view text) {
    auto json = nlohmann::json::parse(text.begin(), text.end(), nullptr,
                                      /*allow_exceptions=*/false);
    if (json.is_discarded()) return std::nullopt;
    return fromJson(json);
}

std::string LidConfig::describe() const {
    std::string line;
    const auto json = toJson(*this);
    for (const auto& [key, value] : json.items()) {
        if (!line.empty()) line += ' ';
        // Integers and flags read as JSON writes them; durations in their shortest exact form.
        line += key + "=" +
                (value.is_number_float() ? shortestText(value.get<double>()) : value.dump());
    }
    return line;
}

}  // namespace lumora
