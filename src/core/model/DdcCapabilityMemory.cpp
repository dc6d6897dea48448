#include "model/DdcCapabilityMemory.h"

namespace lumora {

DdcCapabilityMemory::DdcCapabilityMemory(Defaults& defaults) : defaults_(defaults) {
    const auto json = defaults_.jsonData(kKey);
    if (!json || !json->is_object()) return;
    for (const auto& [monitor, text] : json->items()) {
        if (text.is_string() && parseCapabilities(text.get<std::string>()))
            texts_[monitor] = text.get<std::string>();
    }
}

std::optional<DdcCapabilities> DdcCapabilityMemory::known(const std::string& monitor) const {
    auto found = texts_.find(monitor);
    if (found == texts_.end()) return std::nullopt;
    return parseCapabilities(found->second);
}

bool DdcCapabilityMemory::remember(const std::string& monitor, const std::string& text) {
    if (!parseCapabilities(text)) return false;
    auto [at, added] = texts_.try_emplace(monitor, text);
    if (!added && at->second == text) return true;
    at->second = text;
    nlohmann::json json = nlohmann::json::object();
    for (const auto& [key, value] : texts_)
        json[key] = value;
    defaults_.setJsonData(kKey, json);
    return true;
}

}  // namespace lumora
