#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

// The built-in display behind `id` when the entry points exist.
template <class Data>
auto* panel(Data& data, DisplayID id) {
    auto* d = data.find(id);
    return data.backlightControl && d && d->builtin ? d : nullptr;
}

// The panel's backlight works by display identifier, so it answers also while the panel is
// switched off in software (the lid logic dims a panel it has just switched off).
class SimBacklight final : public Backlight {
  public:
    explicit SimBacklight(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    [[nodiscard]] bool hasGet() const override { return present(); }
    [[nodiscard]] bool hasSet() const override { return present(); }
    [[nodiscard]] bool hasCanChange() const override { return present(); }

    std::int32_t get(DisplayID id, float& level) override {
        return core_->read([&](const SimData& data) {
            const SimDisplay* d = panel(data, id);
            if (!d) return kSimNoDevice;
            level = static_cast<float>(d->backlight);
            return 0;
        });
    }

    std::int32_t set(DisplayID id, float level) override {
        std::int32_t status = kSimNoDevice;
        core_->update([&](SimData& data) {
            SimDisplay* d = panel(data, id);
            if (!d) return false;
            d->backlight = level;
            status = 0;
            return true;
        });
        return status;
    }

    bool canChange(DisplayID id) override {
        return core_->read([&](const SimData& data) { return panel(data, id) != nullptr; });
    }

  private:
    [[nodiscard]] bool present() const {
        return core_->read([](const SimData& d) { return d.backlightControl; });
    }

    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<Backlight> makeSimBacklight(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimBacklight>(std::move(core));
}

}  // namespace lumora::sim
