#include "platform/DrmDisplayServer.h"

#include <algorithm>

namespace lumora::lx {

namespace {

bool builtinConnector(const std::string& name) {
    for (const char* prefix : {"eDP", "LVDS", "DSI"}) {
        if (name.rfind(prefix, 0) == 0) return true;
    }
    return false;
}

// Every change is refused: this session's display server is not Lumora's to configure.
class NoConfiguration final : public DisplayConfiguration {
  public:
    ConfigStatus setMode(DisplayID, std::int32_t) override { return kConfigUnavailable; }
    ConfigStatus setOrigin(DisplayID, std::int32_t, std::int32_t) override {
        return kConfigUnavailable;
    }
    ConfigStatus setMain(DisplayID) override { return kConfigUnavailable; }
    ConfigStatus setMirror(DisplayID, DisplayID) override { return kConfigUnavailable; }
    ConfigStatus setEnabled(DisplayID, bool) override { return kConfigUnavailable; }
    ConfigStatus complete(ConfigureOption) override { return kConfigUnavailable; }
    void cancel() override {}
};

std::vector<DrmConnector> connectedOnly(std::vector<DrmConnector> all) {
    std::erase_if(all, [](const DrmConnector& c) { return !c.connected; });
    return all;
}

}  // namespace

DrmDisplayServer::DrmDisplayServer(std::filesystem::path sysfsRoot)
    : sysfsRoot_(std::move(sysfsRoot)), connected_(connectedOnly(readDrmConnectors(sysfsRoot_))) {}

void DrmDisplayServer::refresh() {
    auto now = connectedOnly(readDrmConnectors(sysfsRoot_));
    std::vector<std::pair<DisplayID, DisplayChange>> changes;
    auto has = [](const std::vector<DrmConnector>& list, DisplayID id) {
        return std::any_of(list.begin(), list.end(), [id](const auto& c) { return c.id == id; });
    };
    for (const auto& c : now) {
        if (!has(connected_, c.id)) changes.emplace_back(c.id, DisplayChange::added);
    }
    for (const auto& c : connected_) {
        if (!has(now, c.id)) changes.emplace_back(c.id, DisplayChange::removed);
    }
    connected_ = std::move(now);
    const auto handlers = handlers_;
    for (const auto& [id, change] : changes) {
        for (const auto& [registration, handler] : handlers)
            handler(id, change);
    }
}

const DrmConnector* DrmDisplayServer::find(DisplayID id) const {
    auto it = std::find_if(connected_.begin(), connected_.end(),
                           [id](const DrmConnector& c) { return c.id == id; });
    return it == connected_.end() ? nullptr : &*it;
}

std::vector<DisplayID> DrmDisplayServer::onlineIDs() const {
    std::vector<DisplayID> ids;
    for (const auto& c : connected_)
        ids.push_back(c.id);
    return ids;
}

DisplayID DrmDisplayServer::mainDisplay() const {
    return connected_.empty() ? 0 : connected_.front().id;
}

bool DrmDisplayServer::isBuiltin(DisplayID id) const {
    const DrmConnector* c = find(id);
    return c && builtinConnector(c->name);
}

std::uint32_t DrmDisplayServer::vendor(DisplayID id) const {
    const DrmConnector* c = find(id);
    return c && c->identity.edid ? c->identity.edid->vendor : 0;
}

std::uint32_t DrmDisplayServer::model(DisplayID id) const {
    const DrmConnector* c = find(id);
    return c && c->identity.edid ? c->identity.edid->product : 0;
}

std::uint32_t DrmDisplayServer::serial(DisplayID id) const {
    const DrmConnector* c = find(id);
    return c && c->identity.edid ? c->identity.edid->serial : 0;
}

Size DrmDisplayServer::physicalSize(DisplayID id) const {
    const DrmConnector* c = find(id);
    if (!c || !c->identity.edid) return {};
    return Size{static_cast<double>(c->identity.edid->widthMM),
                static_cast<double>(c->identity.edid->heightMM)};
}

std::unique_ptr<DisplayConfiguration> DrmDisplayServer::beginConfiguration() {
    return std::make_unique<NoConfiguration>();
}

std::vector<Screen> DrmDisplayServer::screens() const {
    std::vector<Screen> screens;
    for (const auto& c : connected_) {
        const auto& edid = c.identity.edid;
        screens.push_back(Screen{c.id, edid && edid->name ? *edid->name : c.name, Rect{}});
    }
    return screens;
}

int DrmDisplayServer::addReconfigurationHandler(ReconfigurationHandler handler) {
    handlers_.emplace(nextHandler_, std::move(handler));
    return nextHandler_++;
}

void DrmDisplayServer::removeReconfigurationHandler(int registration) {
    handlers_.erase(registration);
}

}  // namespace lumora::lx
