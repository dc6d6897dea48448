#pragma once

#include "adaptive/AdaptiveBrightness.h"
#include "model/AppModel.h"

namespace lumora {

// Adaptive brightness's view of the model: the external displays whose brightness path is
// settled (DDC once their first scan is over, or software dimming where gamma exists), the
// built-in level read fresh, and brightness set without counting as the user's correction.
class AppModel::AdaptiveLink : public AdaptiveHost {
  public:
    explicit AdaptiveLink(AppModel& model) : model_(model) {}

    [[nodiscard]] std::vector<Display> adaptiveDisplays() const override {
        std::vector<Display> list;
        const bool gamma = model_.capabilities().gamma;
        for (const DisplayInfo& d : model_.displays_.get()) {
            if (!d.isOnline || d.isBuiltin || d.isVirtual || model_.ddc_->scanning(d.id)) continue;
            if (model_.brightness_.path(d.id) == BrightnessPath::software && !gamma) continue;
            list.push_back({d.id, model_.ports_.platform.displayServer().persistentKey(d.id)});
        }
        return list;
    }

    [[nodiscard]] std::optional<double> builtinLevel() override {
        if (!model_.capabilities().backlight) return std::nullopt;
        for (const DisplayInfo& d : model_.displays_.get()) {
            if (!d.isBuiltin || !d.isOnline) continue;
            if (!model_.brightness_.readBuiltin(d.id)) return std::nullopt;
            return model_.brightness_.builtinBrightness().get();
        }
        return std::nullopt;
    }

    [[nodiscard]] bool hasLightSensor() const override {
        return model_.capabilities().ambientLight;
    }
    [[nodiscard]] double level(DisplayID display) const override {
        return model_.brightness_.level(display);
    }
    void applyLevel(DisplayID display, double level) override {
        model_.brightness_.setAutomatically(display, level);
    }
    void applyTint(DisplayID display, const std::optional<ChannelGains>& tint) override {
        model_.brightness_.setTint(display, tint);
    }
    void adaptiveWillChange() override { model_.objectWillChange_.emit(); }

  private:
    AppModel& model_;
};

}  // namespace lumora
