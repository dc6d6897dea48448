#include <map>
#include <optional>
#include <utility>

#include "wayland/wlroots/WlrootsDisplayServer.h"
#include "wayland/wlroots/WlrootsOutputs.h"

namespace lumora::wl {

namespace {

// Applying may mean a modeset; compositors answer within a second or two.
constexpr int kApplyTimeoutMs = 5000;

enum class Outcome { pending, succeeded, failed, cancelled };

void configurationSucceeded(void* data, zwlr_output_configuration_v1*) {
    *static_cast<Outcome*>(data) = Outcome::succeeded;
}
void configurationFailed(void* data, zwlr_output_configuration_v1*) {
    *static_cast<Outcome*>(data) = Outcome::failed;
}
void configurationCancelled(void* data, zwlr_output_configuration_v1*) {
    *static_cast<Outcome*>(data) = Outcome::cancelled;
}

const zwlr_output_configuration_v1_listener kConfigurationListener = {
    configurationSucceeded, configurationFailed, configurationCancelled};

// Queues changes per head and sends them as one configuration of every head, tied to the serial
// of the state they were made on. Both ConfigureOption values act the same: wlroots keeps no
// configuration of its own beyond the session.
class WlrootsConfiguration final : public DisplayConfiguration {
  public:
    explicit WlrootsConfiguration(WlrootsState& state) : state_(state) {}

    ConfigStatus setMode(DisplayID id, std::int32_t modeID) override {
        const WlrHead* head = state_.onlineHead(id);
        const auto key = state_.modeHandles.key(id, modeID);
        if (!head || !key || !findMode(state_.view(*head), *key)) return kConfigIllegalArgument;
        modes_[id] = *key;
        return kConfigOK;
    }

    ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override {
        if (!state_.onlineHead(id)) return kConfigIllegalArgument;
        origins_[id] = {x, y};
        return kConfigOK;
    }

    ConfigStatus setMain(DisplayID /*id*/) override { return kConfigUnavailable; }

    ConfigStatus setMirror(DisplayID /*id*/, DisplayID /*target*/) override {
        return kConfigUnavailable;
    }

    ConfigStatus setEnabled(DisplayID id, bool enabled) override {
        if (!state_.head(id)) return kConfigIllegalArgument;
        enabled_[id] = enabled;
        return kConfigOK;
    }

    ConfigStatus complete(ConfigureOption /*option*/) override {
        const bool nothing = modes_.empty() && origins_.empty() && enabled_.empty();
        const ConfigStatus status = nothing ? kConfigOK : apply();
        cancel();
        return status;
    }

    void cancel() override {
        modes_.clear();
        origins_.clear();
        enabled_.clear();
    }

  private:
    static std::optional<ModeView> findMode(const HeadView& view, const std::string& key) {
        for (const auto& mode : view.modes) {
            if (mode.key() == key) return mode;
        }
        return std::nullopt;
    }

    static void setMode(zwlr_output_configuration_head_v1* h, const ModeView& mode) {
        if (mode.proxy) {
            zwlr_output_configuration_head_v1_set_mode(h, mode.proxy->proxy);
        } else {
            zwlr_output_configuration_head_v1_set_custom_mode(h, mode.width, mode.height,
                                                              mode.refresh);
        }
    }

    ConfigStatus apply() {
        if (!state_.manager) return kConfigUnavailable;
        auto* config = zwlr_output_manager_v1_create_configuration(state_.manager, state_.serial);
        Outcome outcome = Outcome::pending;
        zwlr_output_configuration_v1_add_listener(config, &kConfigurationListener, &outcome);
        std::vector<zwlr_output_configuration_head_v1*> configured;
        for (const auto& head : state_.heads) {
            const HeadView view = state_.view(*head);
            const auto enabled = enabled_.find(head->id);
            const bool on = enabled == enabled_.end() ? view.online : enabled->second;
            if (!on) {
                zwlr_output_configuration_v1_disable_head(config, head->proxy);
                continue;
            }
            // Every property left unset keeps its current value.
            auto* h = zwlr_output_configuration_v1_enable_head(config, head->proxy);
            configured.push_back(h);
            std::optional<ModeView> mode;
            if (const auto wanted = modes_.find(head->id); wanted != modes_.end())
                mode = findMode(view, wanted->second);
            if (!mode && !view.online) mode = preferredMode(view);
            if (mode) setMode(h, *mode);
            if (const auto origin = origins_.find(head->id); origin != origins_.end())
                zwlr_output_configuration_head_v1_set_position(h, origin->second.first,
                                                               origin->second.second);
        }
        zwlr_output_configuration_v1_apply(config);
        const bool answered =
            state_.waitUntil([&outcome] { return outcome != Outcome::pending; }, kApplyTimeoutMs);
        for (auto* h : configured)
            zwlr_output_configuration_head_v1_destroy(h);
        zwlr_output_configuration_v1_destroy(config);
        // The compositor sends its new state (or the one that made ours stale) before the
        // answer to this round trip: the handlers hear about it from there.
        state_.sync();
        state_.deliverChanges();
        if (outcome == Outcome::succeeded) return kConfigOK;
        state_.log(std::string("wlroots: output configuration ") +
                   (!answered                       ? "not answered by the compositor"
                    : outcome == Outcome::cancelled ? "cancelled: the outputs changed meanwhile"
                                                    : "refused by the compositor"));
        return kConfigRefused;
    }

    static std::optional<ModeView> preferredMode(const HeadView& view) {
        for (const auto& mode : view.modes) {
            if (mode.preferred) return mode;
        }
        if (view.modes.empty()) return std::nullopt;
        return view.modes.front();
    }

    WlrootsState& state_;
    std::map<DisplayID, std::string> modes_;
    std::map<DisplayID, std::pair<std::int32_t, std::int32_t>> origins_;
    std::map<DisplayID, bool> enabled_;
};

}  // namespace

std::unique_ptr<DisplayConfiguration> WlrootsDisplayServer::beginConfiguration() {
    if (!state_->manager || state_->connectionLost) return nullptr;
    return std::make_unique<WlrootsConfiguration>(*state_);
}

}  // namespace lumora::wl
