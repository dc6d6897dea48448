#include "ddc/DDC.h"

#include <algorithm>
#include <string_view>

namespace lumora::DDC {

namespace {

// The location of a monitor's link; the built-in panel's service says otherwise.
constexpr std::string_view kExternalLocation = "External";

using Candidates = std::vector<std::shared_ptr<DDCService>>;

Candidates openExternal(AVServices& services, Sleeper& sleeper) {
    Candidates candidates;
    for (const auto& entry : services.entries()) {
        if (entry.location != kExternalLocation) continue;
        if (auto service = DDCService::open(services, entry, sleeper)) {
            candidates.push_back(std::move(service));
        }
    }
    return candidates;
}

// A display serial of 0 means the display server does not know it: any channel serial fits.
Candidates::iterator findByEdid(Candidates& candidates, const DisplayServer& displays,
                                DisplayID id) {
    const auto vendor = displays.vendor(id);
    const auto product = displays.model(id);
    const auto serial = displays.serial(id);
    auto sameModel = [&](const std::shared_ptr<DDCService>& c) {
        return c->edidVendor() == vendor && c->edidProduct() == product;
    };
    auto exact = std::find_if(candidates.begin(), candidates.end(), [&](const auto& c) {
        return sameModel(c) && (serial == 0 || c->edidSerial() == serial);
    });
    if (exact != candidates.end()) return exact;
    return std::find_if(candidates.begin(), candidates.end(), sameModel);
}

}  // namespace

std::map<DisplayID, std::shared_ptr<DDCService>> services(AVServices& services,
                                                          const DisplayServer& displays,
                                                          Sleeper& sleeper,
                                                          const std::vector<DisplayID>& ids) {
    std::map<DisplayID, std::shared_ptr<DDCService>> assigned;
    if (!services.canCreate()) return assigned;
    auto candidates = openExternal(services, sleeper);

    for (DisplayID id : ids) {
        if (assigned.contains(id)) continue;  // listed twice
        auto found = findByEdid(candidates, displays, id);
        if (found == candidates.end()) continue;
        assigned.emplace(id, std::move(*found));
        candidates.erase(found);
    }
    // Monitors whose EDID was unreadable or disagrees with the display server: registry
    // order against display order.
    for (DisplayID id : ids) {
        if (candidates.empty()) break;
        if (assigned.contains(id)) continue;
        assigned.emplace(id, std::move(candidates.front()));
        candidates.erase(candidates.begin());
    }
    return assigned;
}

}  // namespace lumora::DDC
