#include "virtual/VirtualScreenConfig.h"

#include "base/JsonRead.h"

namespace lumora {

std::string VirtualScreenConfig::defaultName(std::int64_t width, std::int64_t height) {
    return "Lumora " + std::to_string(width) + "\u00D7" + std::to_string(height);
}

namespace {

using nlohmann::json;

constexpr const char* kID = "id";
constexpr const char* kName = "name";
constexpr const char* kWidth = "width";
constexpr const char* kHeight = "height";
constexpr const char* kRefresh = "refresh";
constexpr const char* kHiDPI = "hiDPI";
constexpr const char* kEnabled = "enabled";

}  // namespace

json VirtualScreenConfig::toJson() const {
    return json{{kID, id},           {kName, name},   {kWidth, width},    {kHeight, height},
                {kRefresh, refresh}, {kHiDPI, hiDPI}, {kEnabled, enabled}};
}

std::optional<VirtualScreenConfig> VirtualScreenConfig::fromJson(const json& value) {
    using namespace jsonread;
    VirtualScreenConfig c;
    const bool ok =
        assign(c.id, integer<std::uint32_t>(value, kID)) && assign(c.name, string(value, kName)) &&
        assign(c.width, integer(value, kWidth)) && assign(c.height, integer(value, kHeight)) &&
        assign(c.refresh, number(value, kRefresh)) && assign(c.hiDPI, boolean(value, kHiDPI)) &&
        assign(c.enabled, boolean(value, kEnabled));
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
