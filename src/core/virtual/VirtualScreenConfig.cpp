#include "virtual/VirtualScreenConfig.h"

#include <limits>

namespace lumora {

namespace {

using nlohmann::json;

constexpr const char* kID = "id";
constexpr const char* kName = "name";
constexpr const char* kWidth = "width";
constexpr const char* kHeight = "height";
constexpr const char* kRefresh = "refresh";
constexpr const char* kHiDPI = "hiDPI";
constexpr const char* kEnabled = "enabled";

// The readers look at the value's type before converting, so no conversion can throw.

bool readID(const json& object, std::uint32_t& out) {
    auto it = object.find(kID);
    // Non-negative literals arrive unsigned; a negative one is no id.
    if (it == object.end() || !it->is_number_unsigned()) return false;
    const auto value = it->get<std::uint64_t>();
    if (value > std::numeric_limits<std::uint32_t>::max()) return false;
    out = static_cast<std::uint32_t>(value);
    return true;
}

bool readSize(const json& object, const char* key, std::int64_t& out) {
    auto it = object.find(key);
    if (it == object.end()) return false;
    if (it->is_number_unsigned()) {
        const auto value = it->get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return false;
        }
        out = static_cast<std::int64_t>(value);
        return true;
    }
    if (!it->is_number_integer()) return false;
    out = it->get<std::int64_t>();
    return true;
}

bool readRefresh(const json& object, double& out) {
    auto it = object.find(kRefresh);
    if (it == object.end() || !it->is_number()) return false;
    out = it->get<double>();
    return true;
}

bool readString(const json& object, const char* key, std::string& out) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_string()) return false;
    out = it->get<std::string>();
    return true;
}

bool readFlag(const json& object, const char* key, bool& out) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_boolean()) return false;
    out = it->get<bool>();
    return true;
}

}  // namespace

json VirtualScreenConfig::toJson() const {
    return json{{kID, id},           {kName, name},   {kWidth, width},    {kHeight, height},
                {kRefresh, refresh}, {kHiDPI, hiDPI}, {kEnabled, enabled}};
}

std::optional<VirtualScreenConfig> VirtualScreenConfig::fromJson(const json& value) {
    if (!value.is_object()) return std::nullopt;
    VirtualScreenConfig c;
    const bool ok = readID(value, c.id) && readString(value, kName, c.name) &&
                    readSize(value, kWidth, c.width) && readSize(value, kHeight, c.height) &&
                    readRefresh(value, c.refresh) && readFlag(value, kHiDPI, c.hiDPI) &&
                    readFlag(value, kEnabled, c.enabled);
    if (!ok) return std::nullopt;
    return c;
}

json VirtualScreenConfig::listToJson(const std::vector<VirtualScreenConfig>& configs) {
    json list = json::array();
    for (const auto& config : configs)
        list.push_back(config.toJson());
    return list;
}

std::optional<std::vector<VirtualScreenConfig>> VirtualScreenConfig::listFromJson(
    const json& value) {
    if (!value.is_array()) return std::nullopt;
    std::vector<VirtualScreenConfig> configs;
    configs.reserve(value.size());
    for (const auto& item : value) {
        auto config = fromJson(item);
        if (!config) return std::nullopt;
        configs.push_back(std::move(*config));
    }
    return configs;
}

std::optional<std::vector<VirtualScreenConfig>> VirtualScreenConfig::listFromJsonText(
    std::string_view text) {
    auto parsed = json::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
    if (parsed.is_discarded()) return std::nullopt;
    return listFromJson(parsed);
}

}  // namespace lumora
