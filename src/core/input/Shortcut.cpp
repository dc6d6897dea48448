#include "input/Shortcut.h"

#include <limits>
#include <ostream>

namespace lumora {

namespace {

constexpr const char* kKeyCodeKey = "keyCode";
constexpr const char* kModifiersKey = "modifiers";
constexpr const char* kLabelKey = "label";

// Checks the type before converting, so nothing here can throw.
bool readUInt32(const nlohmann::json& object, const char* key, std::uint32_t& out) {
    auto it = object.find(key);
    if (it == object.end() || !it->is_number_integer()) return false;  // 126.0 is not a key code
    if (it->is_number_unsigned()) {
        auto value = it->get<std::uint64_t>();
        if (value > std::numeric_limits<std::uint32_t>::max()) return false;
        out = static_cast<std::uint32_t>(value);
        return true;
    }
    auto value = it->get<std::int64_t>();
    if (value < 0 || value > std::numeric_limits<std::uint32_t>::max()) return false;
    out = static_cast<std::uint32_t>(value);
    return true;
}

}  // namespace

nlohmann::ordered_json Shortcut::toJson() const {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json[kKeyCodeKey] = keyCode;
    json[kModifiersKey] = modifiers;
    json[kLabelKey] = label;
    return json;
}

std::optional<Shortcut> Shortcut::fromJson(const nlohmann::json& json) {
    if (!json.is_object()) return std::nullopt;
    Shortcut s;
    if (!readUInt32(json, kKeyCodeKey, s.keyCode)) return std::nullopt;
    if (!readUInt32(json, kModifiersKey, s.modifiers)) return std::nullopt;
    auto label = json.find(kLabelKey);
    if (label == json.end() || !label->is_string()) return std::nullopt;
    s.label = label->get<std::string>();
    return s;
}

std::ostream& operator<<(std::ostream& out, const Shortcut& shortcut) {
    return out << shortcut.label << " (key " << shortcut.keyCode << ", mask 0x" << std::hex
               << shortcut.modifiers << std::dec << ")";
}

}  // namespace lumora
