#include "model/BrightnessControl.h"

#include <algorithm>
#include <cmath>

#include "display/Displays.h"

namespace lumora {

namespace {

double clampLevel(double level) {
    return std::isnan(level) ? 0.0 : std::clamp(level, 0.0, 1.0);
}

}  // namespace

BrightnessControl::BrightnessControl(Deps deps, const Signal* willChange)
    : deps_(deps),
      brightness_(deps.backlight),
      gamma_(deps.server),
      builtin_(0.5, willChange),
      color_(loadColorAdjust(deps.defaults), willChange) {}

BrightnessPath BrightnessControl::path(DisplayID display) const {
    if (deps_.server.isBuiltin(display)) return BrightnessPath::backlight;
    if (deps_.ddc.available()->contains(display)) return BrightnessPath::ddc;
    return BrightnessPath::software;
}

ColorAdjust BrightnessControl::colorOf(DisplayID display) const {
    auto found = color_->find(display);
    return found == color_->end() ? ColorAdjust{} : found->second;
}

double BrightnessControl::level(DisplayID display) const {
    switch (path(display)) {
        case BrightnessPath::backlight:
            return builtin_.get();
        case BrightnessPath::ddc:
            return deps_.ddc.value(display, VCP::brightness).value_or(kUnknownDdcBrightness);
        case BrightnessPath::software:
            break;
    }
    return colorOf(display).dim;
}

void BrightnessControl::set(DisplayID display, double level) {
    level = clampLevel(level);
    switch (path(display)) {
        case BrightnessPath::backlight:
            setBuiltin(level);
            break;
        case BrightnessPath::ddc:
            deps_.ddc.set(display, VCP::brightness, level, kDdcBrightnessMax);
            break;
        case BrightnessPath::software: {
            ColorAdjust adjust = colorOf(display);
            adjust.dim = std::max(level, kSoftwareDimFloor);
            setColor(display, adjust);
            break;
        }
    }
    if (!automatic_ && onUserChange_) onUserChange_(display, level);
}

void BrightnessControl::setAutomatically(DisplayID display, double level) {
    automatic_ = true;
    set(display, level);
    automatic_ = false;
}

void BrightnessControl::step(DisplayID display, bool up, bool fine) {
    const double step = fine ? kFineStep : kStep;
    // Snapped to the grid first, so steps land on exact multiples after a slider's odd value.
    const double snapped = step * std::round(level(display) / step);
    const double next = std::clamp(snapped + (up ? step : -step), 0.0, 1.0);
    set(display, next);
    deps_.osd.show(display, next, next < kDimSymbolBelow ? "sun.min.fill" : "sun.max.fill",
                   std::nullopt);
}

void BrightnessControl::setFromSlider(DisplayID display, double level) {
    if (path(display) == BrightnessPath::software) level = std::max(level, kSliderSoftwareFloor);
    set(display, level);
}

void BrightnessControl::setBuiltin(double level) {
    level = clampLevel(level);
    // The panel in the list, else the one remembered from earlier runs.
    DisplayID id = deps_.displays.builtinID();
    for (DisplayID online : deps_.displays.onlineIDs()) {
        if (deps_.server.isBuiltin(online)) {
            id = online;
            break;
        }
    }
    if (id != 0) brightness_.setBuiltin(id, static_cast<float>(level));
    builtin_.set(level);
}

bool BrightnessControl::readBuiltin(DisplayID panel) {
    const auto level = brightness_.builtin(panel);
    if (!level) return false;
    if (*level != builtin_.get()) builtin_.set(*level);
    return true;
}

void BrightnessControl::setColor(DisplayID display, const ColorAdjust& adjust) {
    color_.modify([&](ColorMap& color) { color[display] = adjust; });
    applyColor();
    saveColorAdjust(deps_.defaults, color_.get());
}

void BrightnessControl::setDim(DisplayID display, double dim) {
    ColorAdjust adjust = colorOf(display);
    adjust.dim = clampLevel(dim);
    setColor(display, adjust);
}

void BrightnessControl::applyColor() {
    // The ramps are rebuilt as a set, so every online display is applied together.
    ColorMap online;
    for (DisplayID id : deps_.displays.onlineIDs()) {
        if (auto found = color_->find(id); found != color_->end()) online.insert(*found);
        if (auto tint = tints_.find(id); tint != tints_.end()) {
            ColorAdjust& adjust = online[id];  // the identity when the user set no colour
            adjust.red *= tint->second.red;
            adjust.green *= tint->second.green;
            adjust.blue *= tint->second.blue;
        }
    }
    gamma_.applyAll(online);
}

void BrightnessControl::setTint(DisplayID display, const std::optional<ChannelGains>& tint) {
    if (tint) {
        tints_[display] = *tint;
    } else if (tints_.erase(display) == 0) {
        return;
    }
    applyColor();
}

void BrightnessControl::dimToBlack(DisplayID display) {
    ColorAdjust adjust = colorOf(display);
    if (auto saved = savedDim_.find(display); saved != savedDim_.end()) {
        adjust.dim = saved->second;
        savedDim_.erase(saved);
    } else {
        savedDim_[display] = adjust.dim;
        adjust.dim = 0.0;  // black: past the floor of the brightness control
    }
    setColor(display, adjust);
    deps_.osd.show(display, adjust.dim, adjust.dim == 0.0 ? "moon.fill" : "sun.max.fill",
                   std::nullopt);
}

}  // namespace lumora
