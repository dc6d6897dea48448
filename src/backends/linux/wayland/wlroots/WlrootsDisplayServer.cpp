#include "wayland/wlroots/WlrootsDisplayServer.h"

#include <algorithm>
#include <cmath>

#include "wayland/wlroots/WlrootsOutputs.h"

namespace lumora::wl {

namespace {

constexpr std::size_t kMaxDisplays = 32;
constexpr std::uint32_t kMilliHertz = 1000;

bool builtinConnector(const std::string& name) {
    for (const char* panel : {"eDP", "LVDS", "DSI"}) {
        if (name.rfind(panel, 0) == 0) return true;
    }
    return false;
}

PlatformMode platformMode(WlrootsState& state, const WlrHead& head, double scale,
                          const ModeView& mode) {
    PlatformMode pm;
    pm.id = state.modeHandles.handle(head.id, mode.key());
    pm.pixelWidth = mode.width;
    pm.pixelHeight = mode.height;
    pm.width = std::lround(mode.width / scale);
    pm.height = std::lround(mode.height / scale);
    pm.refresh = static_cast<double>(mode.refresh) / kMilliHertz;
    return pm;
}

}  // namespace

std::unique_ptr<WlrootsDisplayServer> WlrootsDisplayServer::connect(const std::string& display,
                                                                    LogFunction log) {
    auto state = std::make_unique<WlrootsState>();
    state->log = log ? std::move(log) : [](const std::string&) {};
    if (!state->connect(display)) return nullptr;
    return std::unique_ptr<WlrootsDisplayServer>(new WlrootsDisplayServer(std::move(state)));
}

WlrootsDisplayServer::WlrootsDisplayServer(std::unique_ptr<WlrootsState> state)
    : state_(std::move(state)) {}

WlrootsDisplayServer::~WlrootsDisplayServer() = default;

int WlrootsDisplayServer::connectionFd() const {
    return wl_display_get_fd(state_->display);
}

void WlrootsDisplayServer::dispatchPending() {
    state_->dispatchPending();
}

std::vector<DisplayID> WlrootsDisplayServer::onlineIDs() const {
    std::vector<DisplayID> ids;
    for (const auto& [id, facts] : state_->world) {
        if (ids.size() < kMaxDisplays) ids.push_back(id);
    }
    return ids;
}

// No main display in wlroots: the output at the origin plays its part for the core.
DisplayID WlrootsDisplayServer::mainDisplay() const {
    DisplayID first = 0;
    for (const auto& head : state_->heads) {
        const HeadView v = state_->view(*head);
        if (!v.online) continue;
        if (v.x == 0 && v.y == 0) return head->id;
        if (first == 0) first = head->id;
    }
    return first;
}

bool WlrootsDisplayServer::isBuiltin(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head && builtinConnector(head->name);
}

bool WlrootsDisplayServer::isAsleep(DisplayID /*id*/) const {
    return false;
}

std::uint32_t WlrootsDisplayServer::vendor(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head ? head->numbers.vendor : 0;
}

std::uint32_t WlrootsDisplayServer::model(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head ? head->numbers.product : 0;
}

std::uint32_t WlrootsDisplayServer::serial(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head ? head->numbers.serial : 0;
}

std::string WlrootsDisplayServer::persistentKey(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head ? head->key : DisplayServer::persistentKey(id);
}

double WlrootsDisplayServer::rotation(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    return head ? 90.0 * (state_->view(*head).transform % 4) : 0.0;
}

Rect WlrootsDisplayServer::bounds(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    if (!head) return {};
    const HeadView v = state_->view(*head);
    if (!v.current) return {};
    double width = v.current->width;
    double height = v.current->height;
    // Odd transforms stand the output on its side.
    if (v.transform % 2 == 1) std::swap(width, height);
    return Rect{Point{static_cast<double>(v.x), static_cast<double>(v.y)},
                Size{std::round(width / v.scale), std::round(height / v.scale)}};
}

Size WlrootsDisplayServer::physicalSize(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    if (!head) return {};
    return Size{static_cast<double>(head->widthMm), static_cast<double>(head->heightMm)};
}

std::optional<PlatformMode> WlrootsDisplayServer::currentMode(DisplayID id) const {
    const WlrHead* head = state_->onlineHead(id);
    if (!head) return std::nullopt;
    const HeadView v = state_->view(*head);
    if (!v.current) return std::nullopt;
    return platformMode(*state_, *head, v.scale, *v.current);
}

std::vector<PlatformMode> WlrootsDisplayServer::allModes(DisplayID id) const {
    std::vector<PlatformMode> modes;
    const WlrHead* head = state_->onlineHead(id);
    if (!head) return modes;
    const HeadView v = state_->view(*head);
    for (const auto& mode : v.modes)
        modes.push_back(platformMode(*state_, *head, v.scale, mode));
    return modes;
}

DisplayID WlrootsDisplayServer::mirrorSource(DisplayID /*id*/) const {
    return 0;
}

std::vector<Screen> WlrootsDisplayServer::screens() const {
    std::vector<Screen> screens;
    for (DisplayID id : onlineIDs()) {
        const WlrHead* head = state_->onlineHead(id);
        const std::string name = head->description.empty() ? head->name : head->description;
        screens.push_back(Screen{id, name, bounds(id)});
    }
    return screens;
}

int WlrootsDisplayServer::addReconfigurationHandler(ReconfigurationHandler handler) {
    return state_->handlers.add(std::move(handler));
}

void WlrootsDisplayServer::removeReconfigurationHandler(int registration) {
    state_->handlers.remove(registration);
}

}  // namespace lumora::wl
