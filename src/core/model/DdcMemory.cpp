#include "model/DdcMemory.h"

#include "base/JsonRead.h"
#include "ddc/VCP.h"
#include "model/CommandArguments.h"

namespace lumora {

DdcMemory::DdcMemory(Defaults& defaults) : defaults_(defaults) {
    const auto json = defaults_.jsonData(kDdcValuesKey);
    if (!json || !json->is_object()) return;
    for (const auto& [display, codes] : json->items()) {
        if (!codes.is_object()) continue;
        Controls controls;
        for (const auto& [text, value] : codes.items()) {
            const auto code = text.starts_with("0x") ? parseHexByte(text) : std::nullopt;
            const auto raw = jsonread::integer<std::uint16_t>(value);
            if (code && raw && kept(*code)) controls[*code] = *raw;
        }
        if (!controls.empty()) values_[display] = std::move(controls);
    }
}

bool DdcMemory::kept(std::uint8_t code) {
    const auto vcp = vcpFromCode(code);
    return vcp == VCP::brightness || vcp == VCP::contrast || vcp == VCP::volume;
}

void DdcMemory::remember(const std::string& display, std::uint8_t code, std::uint16_t raw) {
    if (!kept(code)) return;
    auto [slot, added] = values_[display].try_emplace(code, raw);
    if (!added && slot->second == raw) return;
    slot->second = raw;
    unsaved_ = true;
}

DdcMemory::Controls DdcMemory::controls(const std::string& display) const {
    auto found = values_.find(display);
    return found == values_.end() ? Controls{} : found->second;
}

void DdcMemory::save() {
    if (!unsaved_) return;
    unsaved_ = false;
    nlohmann::json json = nlohmann::json::object();
    for (const auto& [display, controls] : values_) {
        nlohmann::json codes = nlohmann::json::object();
        for (const auto& [code, raw] : controls)
            codes[hexCode(code)] = raw;
        json[display] = std::move(codes);
    }
    defaults_.setJsonData(kDdcValuesKey, json);
}

}  // namespace lumora
