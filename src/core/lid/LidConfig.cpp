#include "lid/LidConfig.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

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

// The decoders below look at the value's type before converting, so no conversion can throw.

template <typename Json>
bool readAngle(const Json& object, const char* key, std::int64_t& out) {
    auto it = object.find(key);
    if (it == object.end()) return false;
    if (it->is_number_unsigned()) {
        // Positive literals arrive unsigned; beyond the signed range they are not an angle.
        auto value = it->template get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return false;
        }
        out = static_cast<std::int64_t>(value);
        return true;
    }
    if (!it->is_number_integer()) return false;  // 5.0 is a float: the wrong type for an angle
    out = it->template get<std::int64_t>();
    return true;
}

template <typename Json>
bool readDuration(const Json& object, const char* key, double& out) {
    auto it = object.find(key);
    // An integer literal is a duration too: many encoders write 600.0 as 600.
    if (it == object.end() || !it->is_number()) return false;
    double value = it->template get<double>();
    // JSON text has no infinities, but a value built in code might; the countdowns and log
    // lines rely on finite delays.
    if (!std::isfinite(value)) return false;
    out = value;
    return true;
}

template <typename Json>
bool readFlag(const Json& object, const char* key, bool& out) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_boolean()) return false;
    out = it->template get<bool>();
    return true;
}

template <typename Json>
std::optional<LidConfig> decode(const Json& json) {
    if (!json.is_object()) return std::nullopt;
    LidConfig c;
    bool ok = readAngle(json, kCloseAngle, c.closeAngle) &&
              readAngle(json, kOpenAngle, c.openAngle) &&
              readDuration(json, kCloseDebounce, c.closeDebounce) &&
              readDuration(json, kSleepDelay, c.sleepDelay) &&
              readDuration(json, kWakeSleepDelay, c.wakeSleepDelay) &&
              readDuration(json, kPanelRetry, c.panelRetry) &&
              readDuration(json, kResleepInterval, c.resleepInterval) &&
              readFlag(json, kTurnOffPanelWithExternal, c.turnOffPanelWithExternal) &&
              readFlag(json, kDimWhenClosed, c.dimWhenClosed) &&
              readFlag(json, kDisconnectBuiltinWhenExternal, c.disconnectBuiltinWhenExternal);
    if (!ok) return std::nullopt;
    return c;
}

std::string shortest(double value) {
    // Large enough for the longest shortest-round-trip form of any double.
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    if (ec != std::errc()) return "?";
    return std::string(buffer, end);
}

const char* flag(bool value) {
    return value ? "true" : "false";
}

}  // namespace

nlohmann::ordered_json LidConfig::toJson() const {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json[kCloseAngle] = closeAngle;
    json[kOpenAngle] = openAngle;
    json[kCloseDebounce] = closeDebounce;
    json[kSleepDelay] = sleepDelay;
    json[kWakeSleepDelay] = wakeSleepDelay;
    json[kPanelRetry] = panelRetry;
    json[kResleepInterval] = resleepInterval;
    json[kTurnOffPanelWithExternal] = turnOffPanelWithExternal;
    json[kDimWhenClosed] = dimWhenClosed;
    json[kDisconnectBuiltinWhenExternal] = disconnectBuiltinWhenExternal;
    return json;
}

std::string LidConfig::toJsonText() const {
    return toJson().dump();
}

std::optional<LidConfig> LidConfig::fromJson(const nlohmann::json& json) {
    return decode(json);
}

std::optional<LidConfig> LidConfig::fromJson(const nlohmann::ordered_json& json) {
    return decode(json);
}

std::optional<LidConfig> LidConfig::fromJsonText(std::string_view text) {
    auto json = nlohmann::json::parse(text.begin(), text.end(), nullptr,
                                      /*allow_exceptions=*/false);
    if (json.is_discarded()) return std::nullopt;
    return decode(json);
}

std::string LidConfig::describe() const {
    std::string line;
    line += std::string(kCloseAngle) + "=" + std::to_string(closeAngle);
    line += std::string(" ") + kOpenAngle + "=" + std::to_string(openAngle);
    line += std::string(" ") + kCloseDebounce + "=" + shortest(closeDebounce);
    line += std::string(" ") + kSleepDelay + "=" + shortest(sleepDelay);
    line += std::string(" ") + kWakeSleepDelay + "=" + shortest(wakeSleepDelay);
    line += std::string(" ") + kPanelRetry + "=" + shortest(panelRetry);
    line += std::string(" ") + kResleepInterval + "=" + shortest(resleepInterval);
    line += std::string(" ") + kTurnOffPanelWithExternal + "=" + flag(turnOffPanelWithExternal);
    line += std::string(" ") + kDimWhenClosed + "=" + flag(dimWhenClosed);
    line += std::string(" ") + kDisconnectBuiltinWhenExternal + "=" +
            flag(disconnectBuiltinWhenExternal);
    return line;
}

}  // namespace lumora
