#include "wayland/mutter/MutterDisplayServer.h"

#include <algorithm>
#include <cmath>

namespace lumora::wl {

namespace {

constexpr std::size_t kMaxDisplays = 32;
// PowerSaveMode values of DisplayConfig: on, and off (the deepest of its DPMS levels).
constexpr std::int32_t kPowerOn = 0;
constexpr std::int32_t kPowerOff = 3;
// ApplyMonitorsConfig methods.
constexpr std::uint32_t kMethodTemporary = 1;
constexpr std::uint32_t kMethodPersistent = 2;

}  // namespace

std::unique_ptr<MutterDisplayServer> MutterDisplayServer::create(QDBusConnection bus,
                                                                 LogFunction log) {
    if (!bus.isConnected()) return nullptr;
    std::unique_ptr<MutterDisplayServer> server(
        new MutterDisplayServer(std::move(bus), std::move(log)));
    if (!server->readState()) return nullptr;
    server->rebuildEntries();
    server->world_ = server->world();
    MutterDisplayServer* raw = server.get();
    server->relay_ = std::make_unique<MutterSignalRelay>([raw] { raw->refresh(); });
    if (!server->bus_.connectMonitorsChanged(server->relay_.get(), SLOT(monitorsChanged())))
        server->log_("mutter: cannot follow MonitorsChanged; display changes go unnoticed");
    server->watcher_ = server->bus_.watchOwner([raw](bool present) { raw->ownerChanged(present); });
    return server;
}

MutterDisplayServer::MutterDisplayServer(QDBusConnection bus, LogFunction log)
    : bus_(std::move(bus)), log_(std::move(log)) {
    if (!log_) log_ = [](const std::string&) {};
}

MutterDisplayServer::~MutterDisplayServer() = default;

void MutterDisplayServer::fail(const std::string& what, const MutterError& error) const {
    log_("mutter: " + what + " failed (" + error.text() + ")");
}

bool MutterDisplayServer::readState() {
    MutterError error;
    auto state = bus_.currentState(error);
    if (!state) {
        fail("GetCurrentState", error);
        return false;
    }
    state_ = std::move(*state);
    // Gamma and EDIDs come from the older interface; without it there is just no gamma.
    if (auto resources = bus_.resources(error)) {
        resources_ = std::move(*resources);
    } else {
        resources_ = MutterResources{};
    }
    powerSaveMode_ = bus_.powerSaveMode(error).value_or(kPowerOn);
    return true;
}

void MutterDisplayServer::rebuildEntries() {
    std::vector<MonitorIdentity> identities;
    for (const auto& m : state_.monitors) {
        MonitorIdentity identity;
        identity.strings = MonitorStrings{m.connector, m.vendor, m.product, m.serial};
        if (const auto edid = resources_.edids.find(m.connector); edid != resources_.edids.end())
            identity.edid = lx::parseEdid(edid->second);
        identities.push_back(identity);
    }
    const std::vector<DisplayID> ids = displayIDs_.assign(identities);
    entries_.clear();
    for (std::size_t i = 0; i < state_.monitors.size(); ++i) {
        const MutterMonitor& m = state_.monitors[i];
        // Mutter's own size where it gives one, else the EDID's.
        Size mm{static_cast<double>(m.widthMm), static_cast<double>(m.heightMm)};
        if (mm == Size{} && identities[i].edid) {
            mm = Size{static_cast<double>(identities[i].edid->widthMM),
                      static_cast<double>(identities[i].edid->heightMM)};
        }
        entries_.push_back(Entry{ids[i], &m, state_.logicalMonitorOf(m.connector),
                                 identities[i].numbers(), persistentKeyOf(identities[i]), mm});
    }
    // A CRTC may have changed hands; sizes are read again when next needed.
    std::erase_if(gamma_, [&](const auto& g) {
        const Entry* e = online(g.first);
        if (!e) return true;
        return std::none_of(resources_.crtcs.begin(), resources_.crtcs.end(), [&](const auto& c) {
            return c.id == g.second.crtc && c.connector == e->monitor->connector;
        });
    });
}

void MutterDisplayServer::ownerChanged(bool present) {
    if (present == present_) return;
    present_ = present;
    if (!present) {
        log_("mutter: DisplayConfig left the bus; displays cannot be configured until it returns");
        return;
    }
    log_("mutter: DisplayConfig is back; reading the displays again");
    refresh();
}

void MutterDisplayServer::refresh() {
    if (!readState()) return;
    rebuildEntries();
    DisplayWorld now = world();
    const auto changes = diffWorlds(world_, now);
    world_ = std::move(now);
    handlers_.deliver(changes);
}

const MutterDisplayServer::Entry* MutterDisplayServer::entry(DisplayID id) const {
    for (const auto& e : entries_) {
        if (e.id == id) return &e;
    }
    return nullptr;
}

const MutterDisplayServer::Entry* MutterDisplayServer::online(DisplayID id) const {
    const Entry* e = entry(id);
    return e && e->logical ? e : nullptr;
}

DisplayWorld MutterDisplayServer::world() const {
    DisplayWorld world;
    for (DisplayID id : onlineIDs()) {
        const Entry& e = *online(id);
        const MutterMode* mode = e.monitor->currentMode();
        const Rect b = bounds(id);
        std::string facts =
            e.monitor->connector + " " + (mode ? mode->id : "-") + " " +
            std::to_string(b.origin.x) + "," + std::to_string(b.origin.y) + " " +
            std::to_string(b.size.width) + "x" + std::to_string(b.size.height) + " t" +
            std::to_string(e.logical->transform) + " m" + std::to_string(mirrorSource(id)) +
            (e.logical->primary ? " primary" : "") + (powerSaveMode_ != kPowerOn ? " asleep" : "");
        world.emplace_back(id, std::move(facts));
    }
    return world;
}

std::vector<DisplayID> MutterDisplayServer::onlineIDs() const {
    std::vector<DisplayID> ids;
    for (const auto& e : entries_) {
        if (e.logical && ids.size() < kMaxDisplays) ids.push_back(e.id);
    }
    return ids;
}

DisplayID MutterDisplayServer::mainDisplay() const {
    for (const auto& lm : state_.logicalMonitors) {
        if (!lm.primary || lm.connectors.empty()) continue;
        for (const auto& e : entries_) {
            if (e.monitor->connector == lm.connectors.front()) return e.id;
        }
    }
    return 0;
}

bool MutterDisplayServer::isBuiltin(DisplayID id) const {
    const Entry* e = online(id);
    return e && e->monitor->builtin;
}

bool MutterDisplayServer::isAsleep(DisplayID id) const {
    return online(id) && powerSaveMode_ != kPowerOn;
}

std::uint32_t MutterDisplayServer::vendor(DisplayID id) const {
    const Entry* e = online(id);
    return e ? e->numbers.vendor : 0;
}

std::uint32_t MutterDisplayServer::model(DisplayID id) const {
    const Entry* e = online(id);
    return e ? e->numbers.product : 0;
}

std::uint32_t MutterDisplayServer::serial(DisplayID id) const {
    const Entry* e = online(id);
    return e ? e->numbers.serial : 0;
}

std::string MutterDisplayServer::persistentKey(DisplayID id) const {
    const Entry* e = online(id);
    return e ? e->key : DisplayServer::persistentKey(id);
}

double MutterDisplayServer::rotation(DisplayID id) const {
    const Entry* e = online(id);
    return e ? 90.0 * (e->logical->transform % 4) : 0.0;
}

Rect MutterDisplayServer::bounds(DisplayID id) const {
    const Entry* e = online(id);
    if (!e) return {};
    const MutterMode* mode = e->monitor->currentMode();
    if (!mode) return {};
    const LayoutSize size =
        layoutSize(*mode, e->logical->scale, e->logical->transform, state_.layout);
    return Rect{Point{static_cast<double>(e->logical->x), static_cast<double>(e->logical->y)},
                Size{static_cast<double>(size.width), static_cast<double>(size.height)}};
}

Size MutterDisplayServer::physicalSize(DisplayID id) const {
    const Entry* e = online(id);
    return e ? e->millimetres : Size{};
}

PlatformMode MutterDisplayServer::platformMode(const Entry& e, const MutterMode& mode) const {
    // Points are the pixels divided by the logical monitor's scale where the layout is logical.
    const double scale =
        (state_.layout == MutterLayout::logical && e.logical && e.logical->scale > 0)
            ? e.logical->scale
            : 1.0;
    PlatformMode pm;
    pm.id = modeHandles_.handle(e.id, mode.id);
    pm.pixelWidth = mode.width;
    pm.pixelHeight = mode.height;
    pm.width = std::lround(mode.width / scale);
    pm.height = std::lround(mode.height / scale);
    pm.refresh = mode.refresh;
    return pm;
}

std::optional<PlatformMode> MutterDisplayServer::currentMode(DisplayID id) const {
    const Entry* e = online(id);
    if (!e) return std::nullopt;
    const MutterMode* mode = e->monitor->currentMode();
    if (!mode) return std::nullopt;
    return platformMode(*e, *mode);
}

std::vector<PlatformMode> MutterDisplayServer::allModes(DisplayID id) const {
    std::vector<PlatformMode> modes;
    const Entry* e = online(id);
    if (!e) return modes;
    for (const auto& m : e->monitor->modes)
        modes.push_back(platformMode(*e, m));
    return modes;
}

DisplayID MutterDisplayServer::mirrorSource(DisplayID id) const {
    const Entry* e = online(id);
    if (!e || e->logical->connectors.size() < 2) return 0;
    const std::string& first = e->logical->connectors.front();
    if (first == e->monitor->connector) return 0;
    for (const auto& other : entries_) {
        if (other.monitor->connector == first) return other.id;
    }
    return 0;
}

std::vector<Screen> MutterDisplayServer::screens() const {
    std::vector<Screen> screens;
    for (DisplayID id : onlineIDs()) {
        if (mirrorSource(id) != 0) continue;
        const Entry& e = *online(id);
        const std::string& name = e.monitor->displayName;
        screens.push_back(Screen{id, name.empty() ? e.monitor->connector : name, bounds(id)});
    }
    return screens;
}

int MutterDisplayServer::addReconfigurationHandler(ReconfigurationHandler handler) {
    return handlers_.add(std::move(handler));
}

void MutterDisplayServer::removeReconfigurationHandler(int registration) {
    handlers_.remove(registration);
}

bool MutterDisplayServer::sleepDisplays() {
    MutterError error;
    if (!bus_.setPowerSaveMode(kPowerOff, error)) {
        fail("setting PowerSaveMode", error);
        return false;
    }
    refresh();
    return true;
}

bool MutterDisplayServer::wakeDisplays() {
    MutterError error;
    if (!bus_.setPowerSaveMode(kPowerOn, error)) {
        fail("setting PowerSaveMode", error);
        return false;
    }
    refresh();
    return true;
}

// Configuration support ----------------------------------------------------------------------

std::optional<std::string> MutterDisplayServer::connectorOf(DisplayID id) const {
    const Entry* e = entry(id);
    if (!e) return std::nullopt;
    return e->monitor->connector;
}

bool MutterDisplayServer::isOnline(DisplayID id) const {
    return online(id) != nullptr;
}

std::optional<std::string> MutterDisplayServer::modeKey(DisplayID id, std::int32_t handle) const {
    const Entry* e = online(id);
    if (!e) return std::nullopt;
    auto key = modeHandles_.key(id, handle);
    if (!key || !e->monitor->mode(*key)) return std::nullopt;
    return key;
}

std::optional<MutterPlacement> MutterDisplayServer::placementOf(
    const std::string& connector) const {
    const MutterLogicalMonitor* lm = state_.logicalMonitorOf(connector);
    const MutterMonitor* m = state_.monitor(connector);
    if (!lm || !m || !m->currentMode()) return std::nullopt;
    return MutterPlacement{lm->x, lm->y, lm->scale, lm->transform, m->currentMode()->id};
}

void MutterDisplayServer::rememberPlacement(const std::string& connector,
                                            MutterPlacement placement) {
    placements_[connector] = std::move(placement);
}

std::optional<MutterPlacement> MutterDisplayServer::rememberedPlacement(
    const std::string& connector) const {
    const auto found = placements_.find(connector);
    if (found == placements_.end()) return std::nullopt;
    return found->second;
}

ConfigStatus MutterDisplayServer::apply(const MutterChanges& changes, ConfigureOption option) {
    if (changes.empty()) return kConfigOK;
    const std::uint32_t method =
        option == ConfigureOption::permanently ? kMethodPersistent : kMethodTemporary;
    MutterError error;
    for (int attempt = 0; attempt < 2; ++attempt) {
        const MutterPlan plan = planMonitorsConfig(state_, changes);
        if (!plan.problem.empty()) {
            log_("mutter: cannot configure the displays: " + plan.problem);
            return kConfigIllegalArgument;
        }
        if (bus_.applyMonitorsConfig(state_.serial, method, plan.logicalMonitors, error)) {
            refresh();
            return kConfigOK;
        }
        // Someone else changed the displays since the state was read: once more with the new
        // state, then give up.
        if (!error.staleSerial() || attempt == 1) break;
        if (!readState()) return kConfigRefused;
        rebuildEntries();
    }
    fail("ApplyMonitorsConfig", error);
    refresh();
    return kConfigRefused;
}

}  // namespace lumora::wl
