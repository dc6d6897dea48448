#include "display/Displays.h"

#include <algorithm>
#include <string>

namespace lumora {

namespace {

std::string prefix(DisplayID id) {
    return "display " + std::to_string(id) + ": ";
}

}  // namespace

bool Displays::setMode(DisplayID id, const DisplayMode& mode) {
    // Usable modes including the low-resolution duplicates: whatever the list offered.
    const auto all = server_.allModes(id);
    const bool offered = std::any_of(all.begin(), all.end(), [&mode](const PlatformMode& m) {
        return m.usable && m.id == mode.id;
    });
    if (!offered) return false;

    auto config = server_.beginConfiguration();
    if (!config) return false;
    config->setMode(id, mode.id);
    const ConfigStatus status = config->complete(ConfigureOption::permanently);
    log_.write(prefix(id) + "mode " + mode.label() + " -> " +
               (status == kConfigOK ? std::string("ok") : "error " + std::to_string(status)));
    return status == kConfigOK;
}

bool Displays::setMain(DisplayID id) {
    auto config = server_.beginConfiguration();
    if (!config) return false;
    const ConfigStatus queued = config->setMain(id);
    if (queued != kConfigOK) {
        config->cancel();
        log_.write(prefix(id) + "cannot become the main display (" + std::to_string(queued) + ")");
        return false;
    }
    return config->complete(ConfigureOption::permanently) == kConfigOK;
}

bool Displays::mirror(DisplayID id, DisplayID target) {
    auto config = server_.beginConfiguration();
    if (!config) return false;
    config->setMirror(id, target);
    return config->complete(ConfigureOption::permanently) == kConfigOK;
}

DisplayID Displays::mirrorSource(DisplayID id) const {
    return server_.mirrorSource(id);
}

bool Displays::setEnabled(DisplayID id, bool enabled, bool quiet) {
    if (!enabled) {
        const auto online = onlineIDs();
        const bool anotherOnline = std::any_of(online.begin(), online.end(),
                                               [id](DisplayID other) { return other != id; });
        if (!anotherOnline) {
            log_.write(prefix(id) + "refusing to disconnect the only display");
            return false;
        }
        // Recorded now, while the name can still be read. The built-in panel is listed
        // through its remembered id instead.
        if (!server_.isBuiltin(id)) disconnected_[id] = name(id);
    }

    auto config = server_.beginConfiguration();
    if (!config) return false;
    const ConfigStatus status = config->setEnabled(id, enabled);
    if (status != kConfigOK) {
        config->cancel();
        log_.write(prefix(id) + (enabled ? "connect" : "disconnect") + " failed (" +
                   std::to_string(status) + ")");
        return false;
    }

    // Only for this session: a logout must bring every display back.
    const ConfigStatus result = config->complete(ConfigureOption::forSession);
    if (!quiet || result != kConfigOK) {
        log_.write(prefix(id) + (enabled ? "connected" : "disconnected") + " (" +
                   std::to_string(result) + ")");
    }
    if (enabled && result == kConfigOK) disconnected_.erase(id);
    saveDisconnected();
    return result == kConfigOK;
}

void Displays::reconnectAll() {
    std::vector<DisplayID> ids;
    for (const auto& entry : disconnected_)
        ids.push_back(entry.first);
    for (DisplayID id : ids)
        setEnabled(id, true, false);
}

}  // namespace lumora
