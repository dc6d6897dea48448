#include "wayland/mutter/MutterDisplayServer.h"

namespace lumora::wl {

namespace {

// Queues changes by connector: the handles of the port turn into Mutter's names at once, so a
// retry after a stale serial plans the same changes on the new state.
class MutterConfiguration final : public DisplayConfiguration {
  public:
    explicit MutterConfiguration(MutterDisplayServer& server) : server_(server) {}

    ConfigStatus setMode(DisplayID id, std::int32_t modeID) override {
        const auto connector = onlineConnector(id);
        const auto key = server_.modeKey(id, modeID);
        if (!connector || !key) return kConfigIllegalArgument;
        changes_.modes[*connector] = *key;
        return kConfigOK;
    }

    ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override {
        const auto connector = onlineConnector(id);
        if (!connector) return kConfigIllegalArgument;
        changes_.origins[*connector] = {x, y};
        return kConfigOK;
    }

    ConfigStatus setMain(DisplayID id) override {
        const auto connector = onlineConnector(id);
        if (!connector) return kConfigIllegalArgument;
        changes_.main = *connector;
        return kConfigOK;
    }

    ConfigStatus setMirror(DisplayID id, DisplayID target) override {
        const auto connector = onlineConnector(id);
        if (!connector || target == id) return kConfigIllegalArgument;
        std::string targetConnector;
        if (target != 0) {
            const auto found = onlineConnector(target);
            if (!found) return kConfigIllegalArgument;
            targetConnector = *found;
        }
        changes_.mirrors.emplace_back(*connector, targetConnector);
        return kConfigOK;
    }

    ConfigStatus setEnabled(DisplayID id, bool enabled) override {
        const auto connector = server_.connectorOf(id);
        if (!connector) return kConfigIllegalArgument;
        changes_.enabled[*connector] = enabled;
        if (!enabled) {
            if (auto placement = server_.placementOf(*connector))
                server_.rememberPlacement(*connector, std::move(*placement));
        } else if (auto placement = server_.rememberedPlacement(*connector)) {
            changes_.restore[*connector] = std::move(*placement);
        }
        return kConfigOK;
    }

    ConfigStatus complete(ConfigureOption option) override {
        MutterChanges changes = std::move(changes_);
        changes_ = {};
        return server_.apply(changes, option);
    }

    void cancel() override { changes_ = {}; }

  private:
    std::optional<std::string> onlineConnector(DisplayID id) const {
        if (!server_.isOnline(id)) return std::nullopt;
        return server_.connectorOf(id);
    }

    MutterDisplayServer& server_;
    MutterChanges changes_;
};

}  // namespace

std::unique_ptr<DisplayConfiguration> MutterDisplayServer::beginConfiguration() {
    if (!present_) return nullptr;
    if (!bus_.applyAllowed()) {
        log_("mutter: the compositor does not allow display configuration now");
        return nullptr;
    }
    return std::make_unique<MutterConfiguration>(*this);
}

}  // namespace lumora::wl
