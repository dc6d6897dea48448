#include "ddc/DDC.h"

#include <algorithm>

namespace lumora::DDC {

namespace {

struct Candidate {
    std::shared_ptr<DDCService> service;
    std::optional<DisplayID> display;  // what the platform says the channel belongs to
};
using Candidates = std::vector<Candidate>;

Candidates openExternal(AVServices& services, Sleeper& sleeper) {
    Candidates candidates;
    for (const auto& entry : services.entries()) {
        if (!entry.external) continue;
        if (auto service = DDCService::open(services, entry, sleeper)) {
            candidates.push_back({std::move(service), entry.display});
        }
    }
    return candidates;
}

// A target serial of 0 means the display server does not know it: any channel serial fits.
Candidates::iterator findByEdid(Candidates& candidates, const Target& target) {
    auto sameModel = [&](const Candidate& c) {
        return !c.display && c.service->edidVendor() == target.vendor &&
               c.service->edidProduct() == target.product;
    };
    auto exact = std::find_if(candidates.begin(), candidates.end(), [&](const Candidate& c) {
        return sameModel(c) && (target.serial == 0 || c.service->edidSerial() == target.serial);
    });
    if (exact != candidates.end()) return exact;
    return std::find_if(candidates.begin(), candidates.end(), sameModel);
}

}  // namespace

std::vector<Target> targets(const DisplayServer& server, const std::vector<DisplayID>& ids) {
    std::vector<Target> result;
    result.reserve(ids.size());
    for (DisplayID id : ids)
        result.push_back({id, server.vendor(id), server.model(id), server.serial(id)});
    return result;
}

std::map<DisplayID, std::shared_ptr<DDCService>> services(AVServices& services, Sleeper& sleeper,
                                                          const std::vector<Target>& targets) {
    std::map<DisplayID, std::shared_ptr<DDCService>> assigned;
    if (!services.canCreate()) return assigned;
    auto candidates = openExternal(services, sleeper);
    auto take = [&](DisplayID id, Candidates::iterator found) {
        assigned.emplace(id, std::move(found->service));
        candidates.erase(found);
    };

    // The platform knows which display a channel belongs to: nothing to guess.
    for (const Target& t : targets) {
        if (assigned.contains(t.id)) continue;  // listed twice
        auto named = std::find_if(candidates.begin(), candidates.end(),
                                  [&](const Candidate& c) { return c.display == t.id; });
        if (named != candidates.end()) take(t.id, named);
    }
    for (const Target& t : targets) {
        if (assigned.contains(t.id)) continue;
        auto found = findByEdid(candidates, t);
        if (found != candidates.end()) take(t.id, found);
    }
    // Monitors whose EDID was unreadable or disagrees with the display server: registry
    // order against display order. A channel that names another display is not guessed at.
    std::erase_if(candidates, [](const Candidate& c) { return c.display.has_value(); });
    for (const Target& t : targets) {
        if (candidates.empty()) break;
        if (assigned.contains(t.id)) continue;
        take(t.id, candidates.begin());
    }
    return assigned;
}

}  // namespace lumora::DDC
