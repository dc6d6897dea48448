#include "input/Shortcut.h"

#include <ostream>

#include "base/JsonRead.h"

namespace lumora {

namespace {

constexpr const char* kKeyCodeKey = "keyCode";
constexpr const char* kModifiersKey = "modifiers";
constexpr const char* kLabelKey = "label";

}  // namespace

nlohmann::ordered_json Shortcut::toJson() const {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json[kKeyCodeKey] = keyCode;
    json[kModifiersKey] = modifiers;
    json[kLabelKey] = label;
    return json;
}

std::optional<Shortcut> Shortcut::fromJson(const nlohmann::json& json) {
    using namespace jsonread;
    Shortcut s;
    const bool ok = assign(s.keyCode, integer<std::uint32_t>(json, kKeyCodeKey)) &&
                    assign(s.modifiers, integer<std::uint32_t>(json, kModifiersKey)) &&
                    assign(s.label, string(json, kLabelKey));
    if (!ok) return std::nullopt;
    return s;
}

std::ostream& operator<<(std::ostream& out, const Shortcut& shortcut) {
    return out << shortcut.label << " (key " << shortcut.keyCode << ", mask 0x" << std::hex
               << shortcut.modifiers << std::dec << ")";
}

}  // namespace lumora
