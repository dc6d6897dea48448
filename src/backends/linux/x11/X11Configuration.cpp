#include "x11/X11Configuration.h"

#include <algorithm>

#include "x11/X11DisplayServer.h"

namespace lumora::lx {

X11Configuration::X11Configuration(X11DisplayServer& server, std::weak_ptr<bool> alive)
    : server_(server), alive_(std::move(alive)) {}

ConfigStatus X11Configuration::setMode(DisplayID id, std::int32_t modeID) {
    const DisplayFacts* d = alive_.expired() ? nullptr : server_.online(id);
    const bool offered =
        d && std::any_of(d->modes.begin(), d->modes.end(),
                         [modeID](const PlatformMode& m) { return m.id == modeID; });
    return queue(offered, SetModeChange{id, static_cast<XId>(modeID)});
}

ConfigStatus X11Configuration::setOrigin(DisplayID id, std::int32_t x, std::int32_t y) {
    return queue(!alive_.expired() && server_.online(id), SetOriginChange{id, x, y});
}

ConfigStatus X11Configuration::setMain(DisplayID id) {
    return queue(!alive_.expired() && server_.online(id), SetMainChange{id});
}

ConfigStatus X11Configuration::setMirror(DisplayID id, DisplayID target) {
    const bool valid = !alive_.expired() && server_.online(id) &&
                       (target == 0 || (target != id && server_.online(target)));
    return queue(valid, SetMirrorChange{id, target});
}

ConfigStatus X11Configuration::setEnabled(DisplayID id, bool enabled) {
    // Switched-off displays stay known while their outputs are connected.
    return queue(!alive_.expired() && server_.world().find(id), SetEnabledChange{id, enabled});
}

ConfigStatus X11Configuration::complete(ConfigureOption /*option*/) {
    std::vector<ConfigChange> changes = std::move(changes_);
    changes_.clear();
    if (alive_.expired()) return kConfigUnavailable;
    if (changes.empty()) return kConfigOK;
    return server_.apply(changes);
}

void X11Configuration::cancel() {
    changes_.clear();
}

ConfigStatus X11Configuration::queue(bool valid, ConfigChange change) {
    if (!valid) return kConfigIllegalArgument;
    changes_.push_back(change);
    return kConfigOK;
}

}  // namespace lumora::lx
