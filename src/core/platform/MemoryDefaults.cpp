#include "platform/MemoryDefaults.h"

namespace lumora {

std::optional<Defaults::Value> MemoryDefaults::object(std::string_view key) const {
    std::lock_guard lock(mutex_);
    auto it = values_.find(key);
    if (it == values_.end()) return std::nullopt;
    return it->second;
}

void MemoryDefaults::set(std::string_view key, Value value) {
    std::lock_guard lock(mutex_);
    values_.insert_or_assign(std::string(key), std::move(value));
}

void MemoryDefaults::remove(std::string_view key) {
    std::lock_guard lock(mutex_);
    if (auto it = values_.find(key); it != values_.end()) values_.erase(it);
}

nlohmann::json MemoryDefaults::dump() const {
    std::lock_guard lock(mutex_);
    nlohmann::json out = nlohmann::json::object();
    for (const auto& [k, v] : values_)
        out[k] = v;
    return out;
}

}  // namespace lumora
