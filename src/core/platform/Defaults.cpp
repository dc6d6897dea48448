#include "platform/Defaults.h"

namespace lumora {

std::optional<bool> Defaults::boolean(std::string_view key) const {
    auto v = object(key);
    if (!v || !v->is_boolean()) return std::nullopt;
    return v->get<bool>();
}

std::optional<std::int64_t> Defaults::integer(std::string_view key) const {
    auto v = object(key);
    if (!v) return std::nullopt;
    if (v->is_number_integer()) return v->get<std::int64_t>();
    if (v->is_number_float()) {
        double d = v->get<double>();
        // Only whole numbers inside the 64-bit range convert; anything else is not an integer.
        if (d >= -9.2e18 && d <= 9.2e18 && static_cast<double>(static_cast<std::int64_t>(d)) == d) {
            return static_cast<std::int64_t>(d);
        }
    }
    return std::nullopt;
}

std::optional<double> Defaults::number(std::string_view key) const {
    auto v = object(key);
    if (!v || !v->is_number()) return std::nullopt;
    return v->get<double>();
}

std::optional<std::string> Defaults::string(std::string_view key) const {
    auto v = object(key);
    if (!v || !v->is_string()) return std::nullopt;
    return v->get<std::string>();
}

std::optional<Defaults::Bytes> Defaults::data(std::string_view key) const {
    auto v = object(key);
    if (!v) return std::nullopt;
    if (v->is_binary()) return Bytes(v->get_binary().begin(), v->get_binary().end());
    return std::nullopt;
}

std::optional<std::vector<std::string>> Defaults::stringArray(std::string_view key) const {
    auto v = object(key);
    if (!v || !v->is_array()) return std::nullopt;
    std::vector<std::string> out;
    for (const auto& item : *v) {
        if (!item.is_string()) return std::nullopt;
        out.push_back(item.get<std::string>());
    }
    return out;
}

std::optional<std::map<std::string, std::string>> Defaults::stringDictionary(
    std::string_view key) const {
    auto v = object(key);
    if (!v || !v->is_object()) return std::nullopt;
    std::map<std::string, std::string> out;
    for (const auto& [k, item] : v->items()) {
        if (!item.is_string()) return std::nullopt;
        out.emplace(k, item.get<std::string>());
    }
    return out;
}

std::optional<nlohmann::json> Defaults::jsonData(std::string_view key) const {
    auto bytes = data(key);
    if (!bytes) return std::nullopt;
    auto parsed = nlohmann::json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (parsed.is_discarded()) return std::nullopt;
    return parsed;
}

void Defaults::setJsonData(std::string_view key, const nlohmann::json& value) {
    // Replacement of invalid UTF-8 keeps a stray byte in a name from losing the whole setting.
    std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    setData(key, Bytes(text.begin(), text.end()));
}

}  // namespace lumora
