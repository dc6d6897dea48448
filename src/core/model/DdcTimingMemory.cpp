#include "model/DdcTimingMemory.h"

#include <cmath>

namespace lumora {

namespace {

constexpr double kMillisecondsPerSecond = 1000.0;

std::optional<double> waitFrom(const nlohmann::json& value, double longest) {
    if (!value.is_number()) return std::nullopt;
    const double seconds = value.get<double>() / kMillisecondsPerSecond;
    if (!std::isfinite(seconds) || seconds < DdcTimingLearner::kFastest || seconds > longest)
        return std::nullopt;
    return seconds;
}

}  // namespace

DdcTimingMemory::DdcTimingMemory(Defaults& defaults) : defaults_(defaults) {
    const auto json = defaults_.jsonData(kKey);
    if (!json || !json->is_object()) return;
    for (const auto& [monitor, waits] : json->items()) {
        if (!waits.is_array() || waits.size() != 2) continue;
        const auto quiet = waitFrom(waits[0], DdcTiming::kDefaultQuiet);
        const auto reply = waitFrom(waits[1], DdcTiming::kDefaultReplyWait);
        if (quiet && reply) learned_[monitor] = DdcTiming{*quiet, *reply};
    }
}

std::optional<DdcTiming> DdcTimingMemory::learned(const std::string& monitor) const {
    auto found = learned_.find(monitor);
    if (found == learned_.end()) return std::nullopt;
    return found->second;
}

void DdcTimingMemory::remember(const std::string& monitor, const DdcTiming& timing) {
    if (timing == DdcTiming{}) {
        if (learned_.erase(monitor) == 0) return;
    } else {
        learned_[monitor] = timing;
    }
    nlohmann::json json = nlohmann::json::object();
    for (const auto& [key, waits] : learned_) {
        json[key] =
            nlohmann::json::array({std::round(waits.quiet * kMillisecondsPerSecond * 10) / 10,
                                   std::round(waits.replyWait * kMillisecondsPerSecond * 10) / 10});
    }
    defaults_.setJsonData(kKey, json);
}

}  // namespace lumora
