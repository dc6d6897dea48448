#include "decode/GammaMemory.h"

#include <algorithm>

namespace lumora::mac {

bool GammaMemory::fits(const GammaRamps& ramps, std::size_t rampSize) {
    return rampSize > 0 && ramps.red.size() == rampSize && ramps.green.size() == rampSize &&
           ramps.blue.size() == rampSize;
}

void GammaMemory::remember(DisplayID id, GammaRamps ramps) {
    tables_.insert_or_assign(id, std::move(ramps));
}

void GammaMemory::forget(DisplayID id) {
    tables_.erase(id);
}

void GammaMemory::keepOnly(std::span<const DisplayID> online) {
    std::erase_if(tables_, [online](const auto& entry) {
        return std::find(online.begin(), online.end(), entry.first) == online.end();
    });
}

std::vector<std::pair<DisplayID, GammaRamps>> GammaMemory::others(DisplayID id) const {
    std::vector<std::pair<DisplayID, GammaRamps>> out;
    for (const auto& [display, ramps] : tables_) {
        if (display != id) out.emplace_back(display, ramps);
    }
    return out;
}

}  // namespace lumora::mac
