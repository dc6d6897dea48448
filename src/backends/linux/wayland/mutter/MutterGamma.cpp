#include <algorithm>
#include <cmath>

#include "wayland/mutter/MutterDisplayServer.h"

namespace lumora::wl {

namespace {

constexpr double kMaxGammaEntry = 65535.0;

std::string prefix(DisplayID id) {
    return "display " + std::to_string(id) + ": ";
}

}  // namespace

// Gamma through the CRTCs of the older DisplayConfig interface: virtual and remote monitors
// have none, so their ramp size is 0 and software dimming is said to be unavailable once.
MutterDisplayServer::Gamma* MutterDisplayServer::gamma(DisplayID id) const {
    if (const auto known = gamma_.find(id); known != gamma_.end()) return &known->second;
    const Entry* e = online(id);
    if (!e) return nullptr;
    const auto crtc =
        std::find_if(resources_.crtcs.begin(), resources_.crtcs.end(),
                     [&](const MutterCrtc& c) { return c.connector == e->monitor->connector; });
    std::size_t size = 0;
    if (crtc != resources_.crtcs.end()) {
        MutterError error;
        if (const auto tables = bus_.crtcGamma(resources_.serial, crtc->id, error)) {
            size = (*tables)[0].size();
        } else {
            fail("GetCrtcGamma", error);
        }
    }
    if (size == 0) {
        if (gammaAbsentLogged_.insert(id).second) {
            log_(prefix(id) +
                 "software dimming is not available on this display (the compositor gives no "
                 "gamma ramps for it)");
        }
        return nullptr;
    }
    return &gamma_.emplace(id, Gamma{crtc->id, size, std::nullopt}).first->second;
}

std::size_t MutterDisplayServer::gammaRampSize(DisplayID id) const {
    const Gamma* g = gamma(id);
    return g ? g->size : 0;
}

ConfigStatus MutterDisplayServer::setGamma(DisplayID id, const GammaRamps& ramps) {
    Gamma* g = gamma(id);
    if (!g) return kConfigUnavailable;
    if (ramps.red.size() != g->size || ramps.green.size() != g->size ||
        ramps.blue.size() != g->size)
        return kConfigIllegalArgument;
    MutterError error;
    if (!g->original) {
        g->original = bus_.crtcGamma(resources_.serial, g->crtc, error);
        if (!g->original) {
            fail("GetCrtcGamma", error);
            return kConfigRefused;
        }
    }
    GammaTables tables;
    const std::vector<float>* channels[3] = {&ramps.red, &ramps.green, &ramps.blue};
    for (std::size_t c = 0; c < 3; ++c) {
        for (float v : *channels[c]) {
            const double clamped = std::clamp(static_cast<double>(v), 0.0, 1.0);
            tables[c].push_back(static_cast<std::uint16_t>(std::lround(clamped * kMaxGammaEntry)));
        }
    }
    if (!bus_.setCrtcGamma(resources_.serial, g->crtc, tables, error)) {
        fail("SetCrtcGamma", error);
        return kConfigRefused;
    }
    return kConfigOK;
}

void MutterDisplayServer::resetGamma(DisplayID id) {
    const auto known = gamma_.find(id);
    if (known == gamma_.end() || !known->second.original) return;
    MutterError error;
    if (!bus_.setCrtcGamma(resources_.serial, known->second.crtc, *known->second.original, error)) {
        fail("SetCrtcGamma", error);
        return;
    }
    known->second.original.reset();
}

}  // namespace lumora::wl
