#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

class SimDisplayServer final : public DisplayServer {
  public:
    explicit SimDisplayServer(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override {
        return core_->read([](const SimData& d) { return d.onlineIDs(); });
    }
    [[nodiscard]] DisplayID mainDisplay() const override {
        return core_->read([](const SimData& d) { return d.mainDisplay(); });
    }
    [[nodiscard]] bool isBuiltin(DisplayID id) const override {
        return fact(id, false, [](const SimDisplay& d) { return d.builtin; });
    }
    [[nodiscard]] bool isAsleep(DisplayID id) const override {
        return fact(id, false, [](const SimDisplay& d) { return d.asleep; });
    }
    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override {
        return fact(id, 0u, [](const SimDisplay& d) { return d.vendor; });
    }
    [[nodiscard]] std::uint32_t model(DisplayID id) const override {
        return fact(id, 0u, [](const SimDisplay& d) { return d.model; });
    }
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override {
        return fact(id, 0u, [](const SimDisplay& d) { return d.serial; });
    }
    [[nodiscard]] double rotation(DisplayID id) const override {
        return fact(id, 0.0, [](const SimDisplay& d) { return static_cast<double>(d.rotation); });
    }
    [[nodiscard]] Rect bounds(DisplayID id) const override {
        return fact(id, Rect{}, [](const SimDisplay& d) { return d.bounds(); });
    }
    [[nodiscard]] Size physicalSize(DisplayID id) const override {
        return fact(id, Size{}, [](const SimDisplay& d) { return d.sizeMM; });
    }
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID id) const override {
        return fact(id, std::optional<PlatformMode>{}, [](const SimDisplay& d) {
            const PlatformMode* mode = d.currentMode();
            return mode ? std::optional<PlatformMode>(*mode) : std::nullopt;
        });
    }
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID id) const override {
        return fact(id, std::vector<PlatformMode>{}, [](const SimDisplay& d) { return d.modes; });
    }
    [[nodiscard]] DisplayID mirrorSource(DisplayID id) const override {
        return fact(id, DisplayID{0}, [](const SimDisplay& d) { return d.mirrorOf; });
    }

    std::unique_ptr<DisplayConfiguration> beginConfiguration() override {
        return makeSimConfiguration(core_);
    }
    [[nodiscard]] std::size_t gammaRampSize(DisplayID id) const override {
        return fact(id, std::size_t{0}, [](const SimDisplay&) { return kSimGammaRampSize; });
    }
    ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) override {
        ConfigStatus status = kSimIllegalArgument;
        core_->update([&](SimData& data) {
            SimDisplay* d = data.find(id);
            if (!d || !d->online()) return false;
            if (ramps.red.size() != kSimGammaRampSize || ramps.green.size() != kSimGammaRampSize ||
                ramps.blue.size() != kSimGammaRampSize) {
                return false;
            }
            d->gamma = ramps;
            status = kConfigOK;
            return true;
        });
        return status;
    }
    void resetGamma(DisplayID id) override {
        core_->update([&](SimData& data) {
            SimDisplay* d = data.find(id);
            if (!d || !d->gamma) return false;
            d->gamma.reset();
            return true;
        });
    }

    [[nodiscard]] std::vector<Screen> screens() const override {
        return core_->read([](const SimData& data) {
            std::vector<Screen> screens;
            for (const auto& d : data.displays) {
                // A display that mirrors another shows its source's screen, not one of its own.
                if (!d.online() || data.findOnline(d.mirrorOf)) continue;
                screens.push_back(Screen{d.id, d.name.value_or(""), d.bounds()});
            }
            return screens;
        });
    }
    [[nodiscard]] std::optional<Point> pointerLocation() const override {
        return core_->read([](const SimData& d) { return d.cursor; });
    }

    int addReconfigurationHandler(ReconfigurationHandler handler) override {
        return core_->addHandler(std::move(handler));
    }
    void removeReconfigurationHandler(int registration) override {
        core_->removeHandler(registration);
    }

  private:
    // A fact about an online display, or `absent` for any other identifier.
    template <class T, class F>
    T fact(DisplayID id, T absent, F get) const {
        return core_->read([&](const SimData& data) -> T {
            const SimDisplay* d = data.findOnline(id);
            return d ? T(get(*d)) : absent;
        });
    }

    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<DisplayServer> makeSimDisplayServer(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimDisplayServer>(std::move(core));
}

}  // namespace lumora::sim
