#include "platform/Defaults.h"

#include "base/JsonRead.h"

namespace lumora {

std::optional<bool> Defaults::boolean(std::string_view key) const {
    auto v = object(key);
    return v ? jsonread::boolean(*v) : std::nullopt;
}

std::optional<std::int64_t> Defaults::integer(std::string_view key) const {
    auto v = object(key);
    if (!v) return std::nullopt;
    // A stored double counts when it is a whole number inside the 64-bit range.
    if (v->is_number_float()) return checked<std::int64_t>(v->get<double>());
    return jsonread::integer(*v);
}

std::optional<double> Defaults::number(std::string_view key) const {
    auto v = object(key);
    return v ? jsonread::number(*v) : std::nullopt;
}

std::optional<std::string> Defaults::string(std::string_view key) const {
    auto v = object(key);
    return v ? jsonread::string(*v) : std::nullopt;
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
        auto text = jsonread::string(item);
        if (!text) return std::nullopt;
        out.push_back(std::move(*text));
    }
    return out;
}

std::optional<std::map<std::string, std::string>> Defaults::stringDictionary(
    std::string_view key) const {
    auto v = object(key);
    if (!v || !v->is_object()) return std::nullopt;
    std::map<std::string, std::string> out;
    for (const auto& [k, item] : v->items()) {
        auto text = jsonread::string(item);
        if (!text) return std::nullopt;
        out.emplace(k, std::move(*text));
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
