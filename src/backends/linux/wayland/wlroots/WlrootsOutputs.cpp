#include "wayland/wlroots/WlrootsOutputs.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace lumora::wl {

namespace {

// The compositor answers a round trip within milliseconds; a hung one must not freeze the agent.
constexpr int kRoundTripTimeoutMs = 5000;
// Highest versions this code knows: output management 4 (adaptive sync), wl_output 4 (name).
constexpr std::uint32_t kOutputManagerVersion = 4;
constexpr std::uint32_t kWlOutputVersion = 4;
constexpr std::uint32_t kReleaseSince = 3;  // head and mode release requests; wl_output too

// Modes -----------------------------------------------------------------------------------

void modeSize(void* data, zwlr_output_mode_v1*, std::int32_t width, std::int32_t height) {
    auto* mode = static_cast<WlrMode*>(data);
    mode->width = width;
    mode->height = height;
}

void modeRefresh(void* data, zwlr_output_mode_v1*, std::int32_t refresh) {
    static_cast<WlrMode*>(data)->refresh = refresh;
}

void modePreferred(void* data, zwlr_output_mode_v1*) {
    static_cast<WlrMode*>(data)->preferred = true;
}

void modeFinished(void* data, zwlr_output_mode_v1*) {
    auto* mode = static_cast<WlrMode*>(data);
    WlrHead* head = mode->head;
    if (head->current == mode) head->current = nullptr;
    if (head->state->managerVersion >= kReleaseSince) {
        zwlr_output_mode_v1_release(mode->proxy);
    } else {
        zwlr_output_mode_v1_destroy(mode->proxy);
    }
    std::erase_if(head->modes, [mode](const auto& m) { return m.get() == mode; });
}

const zwlr_output_mode_v1_listener kModeListener = {modeSize, modeRefresh, modePreferred,
                                                    modeFinished};

// Heads -----------------------------------------------------------------------------------

WlrHead* asHead(void* data) {
    return static_cast<WlrHead*>(data);
}

void headName(void* data, zwlr_output_head_v1*, const char* name) {
    asHead(data)->name = name;
}
void headDescription(void* data, zwlr_output_head_v1*, const char* description) {
    asHead(data)->description = description;
}
void headPhysicalSize(void* data, zwlr_output_head_v1*, std::int32_t width, std::int32_t height) {
    asHead(data)->widthMm = width;
    asHead(data)->heightMm = height;
}
void headMode(void* data, zwlr_output_head_v1*, zwlr_output_mode_v1* proxy) {
    WlrHead* head = asHead(data);
    auto mode = std::make_unique<WlrMode>();
    mode->head = head;
    mode->proxy = proxy;
    zwlr_output_mode_v1_add_listener(proxy, &kModeListener, mode.get());
    head->modes.push_back(std::move(mode));
}
void headEnabled(void* data, zwlr_output_head_v1*, std::int32_t enabled) {
    asHead(data)->enabled = enabled != 0;
    if (enabled == 0) asHead(data)->current = nullptr;
}
void headCurrentMode(void* data, zwlr_output_head_v1*, zwlr_output_mode_v1* proxy) {
    WlrHead* head = asHead(data);
    head->current = nullptr;
    for (const auto& m : head->modes) {
        if (m->proxy == proxy) head->current = m.get();
    }
}
void headPosition(void* data, zwlr_output_head_v1*, std::int32_t x, std::int32_t y) {
    asHead(data)->x = x;
    asHead(data)->y = y;
}
void headTransform(void* data, zwlr_output_head_v1*, std::int32_t transform) {
    asHead(data)->transform = transform;
}
void headScale(void* data, zwlr_output_head_v1*, wl_fixed_t scale) {
    asHead(data)->scale = wl_fixed_to_double(scale);
}
void headFinished(void* data, zwlr_output_head_v1*) {
    WlrHead* head = asHead(data);
    head->state->removeHead(head);
}
void headMake(void* data, zwlr_output_head_v1*, const char* make) {
    asHead(data)->make = make;
}
void headModel(void* data, zwlr_output_head_v1*, const char* model) {
    asHead(data)->model = model;
}
void headSerial(void* data, zwlr_output_head_v1*, const char* serial) {
    asHead(data)->serial = serial;
}
void headAdaptiveSync(void*, zwlr_output_head_v1*, std::uint32_t) {}

const zwlr_output_head_v1_listener kHeadListener = {
    headName,        headDescription, headPhysicalSize, headMode,        headEnabled,
    headCurrentMode, headPosition,    headTransform,    headScale,       headFinished,
    headMake,        headModel,       headSerial,       headAdaptiveSync};

// Manager ---------------------------------------------------------------------------------

void managerHead(void* data, zwlr_output_manager_v1*, zwlr_output_head_v1* proxy) {
    auto* state = static_cast<WlrootsState*>(data);
    auto head = std::make_unique<WlrHead>();
    head->state = state;
    head->proxy = proxy;
    zwlr_output_head_v1_add_listener(proxy, &kHeadListener, head.get());
    state->heads.push_back(std::move(head));
}

void managerDone(void* data, zwlr_output_manager_v1*, std::uint32_t serial) {
    auto* state = static_cast<WlrootsState*>(data);
    state->serial = serial;
    state->haveState = true;
    state->stateDone();
}

void managerFinished(void* data, zwlr_output_manager_v1*) {
    auto* state = static_cast<WlrootsState*>(data);
    state->log("wlroots: the compositor stopped its output management");
    zwlr_output_manager_v1_destroy(state->manager);
    state->manager = nullptr;
}

const zwlr_output_manager_v1_listener kManagerListener = {managerHead, managerDone,
                                                          managerFinished};

// wl_output and xdg_output ---------------------------------------------------------------

constexpr std::uint32_t kXdgOutputVersion = 3;
constexpr std::uint32_t kCurrentModeFlag = 0x1;  // wl_output.mode flags: current

WlOutput* asOutput(void* data) {
    return static_cast<WlOutput*>(data);
}

void outputGeometry(void* data, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                    std::int32_t, const char*, const char*, std::int32_t transform) {
    asOutput(data)->transform = transform;
}
void outputMode(void* data, wl_output*, std::uint32_t flags, std::int32_t width,
                std::int32_t height, std::int32_t refresh) {
    if ((flags & kCurrentModeFlag) == 0) return;
    WlOutput* output = asOutput(data);
    output->modeWidth = width;
    output->modeHeight = height;
    output->refresh = refresh;
}
void outputDone(void* data, wl_output*) {
    asOutput(data)->state->stateDone();
}
void outputScale(void* data, wl_output*, std::int32_t scale) {
    asOutput(data)->scale = scale;
}
void outputName(void* data, wl_output*, const char* name) {
    asOutput(data)->name = name;
}
void outputDescription(void*, wl_output*, const char*) {}

const wl_output_listener kOutputListener = {outputGeometry, outputMode, outputDone,
                                            outputScale,    outputName, outputDescription};

void xdgPosition(void* data, zxdg_output_v1*, std::int32_t x, std::int32_t y) {
    asOutput(data)->x = x;
    asOutput(data)->y = y;
}
void xdgSize(void*, zxdg_output_v1*, std::int32_t, std::int32_t) {}
void xdgDone(void* data, zxdg_output_v1*) {
    asOutput(data)->state->stateDone();
}
void xdgName(void* data, zxdg_output_v1*, const char* name) {
    if (asOutput(data)->name.empty()) asOutput(data)->name = name;
}
void xdgDescription(void*, zxdg_output_v1*, const char*) {}

const zxdg_output_v1_listener kXdgOutputListener = {xdgPosition, xdgSize, xdgDone, xdgName,
                                                    xdgDescription};

// Registry --------------------------------------------------------------------------------

void registryGlobal(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                    std::uint32_t version) {
    auto* state = static_cast<WlrootsState*>(data);
    const std::string_view iface(interface);
    if (iface == zwlr_output_manager_v1_interface.name && !state->manager) {
        state->managerVersion = std::min(version, kOutputManagerVersion);
        state->manager = static_cast<zwlr_output_manager_v1*>(wl_registry_bind(
            registry, name, &zwlr_output_manager_v1_interface, state->managerVersion));
        zwlr_output_manager_v1_add_listener(state->manager, &kManagerListener, state);
    } else if (iface == zwlr_gamma_control_manager_v1_interface.name && !state->gammaManager) {
        state->gammaManager = static_cast<zwlr_gamma_control_manager_v1*>(
            wl_registry_bind(registry, name, &zwlr_gamma_control_manager_v1_interface, 1));
    } else if (iface == wl_output_interface.name) {
        auto output = std::make_unique<WlOutput>();
        output->state = state;
        output->registryName = name;
        output->version = std::min(version, kWlOutputVersion);
        output->proxy = static_cast<wl_output*>(
            wl_registry_bind(registry, name, &wl_output_interface, output->version));
        wl_output_add_listener(output->proxy, &kOutputListener, output.get());
        state->watchOutput(*output);
        state->outputs.push_back(std::move(output));
    } else if (iface == zxdg_output_manager_v1_interface.name && !state->xdgManager) {
        state->xdgManager = static_cast<zxdg_output_manager_v1*>(
            wl_registry_bind(registry, name, &zxdg_output_manager_v1_interface,
                             std::min(version, kXdgOutputVersion)));
        for (auto& output : state->outputs)
            state->watchOutput(*output);
    }
}

void destroyOutput(WlOutput& output) {
    if (output.xdg) zxdg_output_v1_destroy(output.xdg);
    if (output.version >= kReleaseSince) {
        wl_output_release(output.proxy);
    } else {
        wl_output_destroy(output.proxy);
    }
}

void registryGlobalRemove(void* data, wl_registry*, std::uint32_t name) {
    auto* state = static_cast<WlrootsState*>(data);
    std::erase_if(state->outputs, [name](const auto& output) {
        if (output->registryName != name) return false;
        destroyOutput(*output);
        return true;
    });
}

const wl_registry_listener kRegistryListener = {registryGlobal, registryGlobalRemove};

void syncDone(void* data, wl_callback*, std::uint32_t) {
    *static_cast<bool*>(data) = true;
}
const wl_callback_listener kSyncListener = {syncDone};

}  // namespace

std::string WlrMode::key() const {
    return ModeView{width, height, refresh, preferred, nullptr}.key();
}

std::string ModeView::key() const {
    return std::to_string(width) + "x" + std::to_string(height) + "@" + std::to_string(refresh);
}

void WlrootsState::watchOutput(WlOutput& output) {
    if (!xdgManager || output.xdg) return;
    output.xdg = zxdg_output_manager_v1_get_xdg_output(xdgManager, output.proxy);
    zxdg_output_v1_add_listener(output.xdg, &kXdgOutputListener, &output);
}

HeadView WlrootsState::view(const WlrHead& head) const {
    HeadView v;
    for (const auto& m : head.modes) {
        if (m->width > 0 && m->height > 0)
            v.modes.push_back(ModeView{m->width, m->height, m->refresh, m->preferred, m.get()});
    }
    auto known = [&v](const ModeView& mode) {
        return std::any_of(v.modes.begin(), v.modes.end(),
                           [&mode](const ModeView& m) { return m.key() == mode.key(); });
    };
    if (const auto custom = customModes.find(head.name); custom != customModes.end()) {
        for (const auto& mode : custom->second) {
            if (!known(mode)) v.modes.push_back(mode);
        }
    }
    auto findMode = [&v](const ModeView& mode) -> std::optional<ModeView> {
        for (const auto& m : v.modes) {
            if (m.key() == mode.key()) return m;
        }
        return mode;
    };
    if (head.enabled) {
        v.online = true;
        v.x = head.x;
        v.y = head.y;
        v.transform = head.transform;
        v.scale = head.scale > 0 ? head.scale : 1.0;
        if (head.current && head.current->width > 0) {
            v.current = ModeView{head.current->width, head.current->height, head.current->refresh,
                                 head.current->preferred, head.current};
        }
        return v;
    }
    const WlOutput* out = output(head.name);
    if (!out || out->modeWidth <= 0 || out->modeHeight <= 0) return v;
    v.online = true;
    v.x = out->x;
    v.y = out->y;
    v.transform = out->transform;
    v.scale = out->scale > 0 ? out->scale : 1;
    v.current = findMode(ModeView{out->modeWidth, out->modeHeight, out->refresh, false, nullptr});
    return v;
}

WlrootsState::~WlrootsState() {
    if (!display) return;
    for (auto& [connector, control] : gammaControls)
        zwlr_gamma_control_v1_destroy(control->proxy);
    for (auto& head : heads) {
        for (auto& mode : head->modes)
            zwlr_output_mode_v1_destroy(mode->proxy);
        zwlr_output_head_v1_destroy(head->proxy);
    }
    for (auto& output : outputs)
        destroyOutput(*output);
    if (gammaManager) zwlr_gamma_control_manager_v1_destroy(gammaManager);
    if (xdgManager) zxdg_output_manager_v1_destroy(xdgManager);
    if (manager) {
        zwlr_output_manager_v1_stop(manager);
        zwlr_output_manager_v1_destroy(manager);
    }
    if (registry) wl_registry_destroy(registry);
    wl_display_flush(display);
    wl_display_disconnect(display);
}

bool WlrootsState::connect(const std::string& name) {
    display = wl_display_connect(name.empty() ? nullptr : name.c_str());
    if (!display) return false;
    registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &kRegistryListener, this);
    // The globals, then the heads and their first done, then the wl_output names.
    if (!sync() || !manager) return false;
    const bool ready = waitUntil([this] { return haveState; }, kRoundTripTimeoutMs) && sync();
    delivered = world;
    return ready;
}

bool WlrootsState::waitUntil(const std::function<bool()>& done, int timeoutMs) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!connectionLost) {
        if (wl_display_dispatch_pending(display) < 0) break;
        if (done()) return true;
        bool failed = false;
        while (!failed && wl_display_prepare_read(display) != 0)
            failed = wl_display_dispatch_pending(display) < 0;
        if (failed) break;
        if (done()) {
            wl_display_cancel_read(display);
            return true;
        }
        wl_display_flush(display);
        // A zero wait still reads what has arrived: that is what dispatchPending() is for.
        const auto left = std::max<std::int64_t>(
            0,
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count());
        pollfd fd{wl_display_get_fd(display), POLLIN, 0};
        const int ready = poll(&fd, 1, static_cast<int>(left));
        if (ready > 0) {
            if (wl_display_read_events(display) < 0) break;
            continue;
        }
        wl_display_cancel_read(display);
        if (ready == 0) {
            if (left == 0) return wl_display_dispatch_pending(display) >= 0 && done();
            continue;
        }
        if (errno != EINTR) break;
    }
    if (!connectionLost) {
        connectionLost = true;
        log("wlroots: lost the connection to the compositor (error " +
            std::to_string(wl_display_get_error(display)) + ")");
    }
    return false;
}

bool WlrootsState::sync() {
    bool answered = false;
    wl_callback* callback = wl_display_sync(display);
    wl_callback_add_listener(callback, &kSyncListener, &answered);
    const bool ok = waitUntil([&answered] { return answered; }, kRoundTripTimeoutMs);
    wl_callback_destroy(callback);
    return ok;
}

void WlrootsState::dispatchPending() {
    // An output's state comes in several events (output manager, wl_output, xdg_output):
    // whatever arrived together is one change.
    waitUntil([] { return false; }, 0);
    deliverChanges();
}

void WlrootsState::stateDone() {
    if (!manager || !haveState) return;
    std::vector<MonitorIdentity> identities;
    for (const auto& head : heads) {
        MonitorIdentity identity;
        identity.strings = MonitorStrings{head->name, head->make, head->model, head->serial};
        identities.push_back(identity);
    }
    const auto ids = displayIDs.assign(identities);
    for (std::size_t i = 0; i < heads.size(); ++i) {
        heads[i]->id = ids[i];
        heads[i]->numbers = identities[i].numbers();
        heads[i]->key = persistentKeyOf(identities[i]);
        // A size the output runs in without a mode object stays offered, so it can be chosen
        // again after another one.
        const HeadView v = view(*heads[i]);
        if (v.current && !v.current->proxy) {
            auto& seen = customModes[heads[i]->name];
            const bool known = std::any_of(seen.begin(), seen.end(), [&v](const ModeView& m) {
                return m.key() == v.current->key();
            });
            if (!known) seen.push_back(*v.current);
        }
    }
    world = currentWorld();
}

void WlrootsState::deliverChanges() {
    const auto changes = diffWorlds(delivered, world);
    delivered = world;
    handlers.deliver(changes);
}

WlrHead* WlrootsState::head(DisplayID id) const {
    for (const auto& h : heads) {
        if (h->id == id) return h.get();
    }
    return nullptr;
}

WlrHead* WlrootsState::onlineHead(DisplayID id) const {
    WlrHead* h = head(id);
    return h && view(*h).online ? h : nullptr;
}

DisplayWorld WlrootsState::currentWorld() const {
    DisplayWorld now;
    for (const auto& h : heads) {
        const HeadView v = view(*h);
        if (!v.online || h->id == 0) continue;
        now.emplace_back(h->id, h->name + " " + (v.current ? v.current->key() : "-") + " " +
                                    std::to_string(v.x) + "," + std::to_string(v.y) + " t" +
                                    std::to_string(v.transform) + " s" + std::to_string(v.scale));
    }
    return now;
}

WlOutput* WlrootsState::output(const std::string& name) const {
    for (const auto& o : outputs) {
        if (o->name == name) return o.get();
    }
    return nullptr;
}

void WlrootsState::removeHead(WlrHead* head) {
    for (auto& mode : head->modes)
        zwlr_output_mode_v1_destroy(mode->proxy);
    if (managerVersion >= kReleaseSince) {
        zwlr_output_head_v1_release(head->proxy);
    } else {
        zwlr_output_head_v1_destroy(head->proxy);
    }
    releaseGamma(head->name);
    gammaSizes.erase(head->name);
    gammaAbsentLogged.erase(head->name);
    std::erase_if(heads, [head](const auto& h) { return h.get() == head; });
}

}  // namespace lumora::wl
