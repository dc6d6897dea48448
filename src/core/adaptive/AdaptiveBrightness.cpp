#include "adaptive/AdaptiveBrightness.h"

#include <algorithm>
#include <cmath>

namespace lumora {

namespace {

struct CurveShape {
    CurveScale scale;
    double nearby;  // in scaled units
    std::vector<CurvePoint> start;
};

// Sync starts as the identity; sensor from a dim 10 % in the dark through a typical office
// (300-500 lux, about 60 %) to full in daylight; schedule from 30 % at night to 80 % by day,
// across the twilight.
CurveShape shapeOf(AdaptiveMode mode) {
    switch (mode) {
        case AdaptiveMode::sensor:
            return {CurveScale::logarithmic,
                    0.2,
                    {{0, 0.10}, {10, 0.25}, {100, 0.45}, {1000, 0.75}, {10000, 1.0}}};
        case AdaptiveMode::schedule:
            return {CurveScale::linear, 2.0, {{-6, 0.3}, {6, 0.8}}};
        case AdaptiveMode::off:
        case AdaptiveMode::sync:
            break;
    }
    return {CurveScale::linear, 0.1, {{0, 0}, {1, 1}}};
}

double intervalOf(AdaptiveMode mode) {
    switch (mode) {
        case AdaptiveMode::sensor:
            return AdaptiveBrightness::kSensorInterval;
        case AdaptiveMode::schedule:
            return AdaptiveBrightness::kScheduleInterval;
        case AdaptiveMode::off:
        case AdaptiveMode::sync:
            break;
    }
    return AdaptiveBrightness::kSyncInterval;
}

bool closeGains(const ChannelGains& a, const ChannelGains& b) {
    return std::abs(a.red - b.red) < AdaptiveBrightness::kTintChange &&
           std::abs(a.green - b.green) < AdaptiveBrightness::kTintChange &&
           std::abs(a.blue - b.blue) < AdaptiveBrightness::kTintChange;
}

}  // namespace

std::shared_ptr<AdaptiveBrightness> AdaptiveBrightness::create(Deps deps) {
    return std::make_shared<AdaptiveBrightness>(Passkey{}, deps);
}

AdaptiveBrightness::AdaptiveBrightness(Passkey /*unused*/, Deps deps)
    : deps_(deps),
      stored_(loadAdaptiveMode(deps.defaults)),
      excluded_(loadAdaptiveExcluded(deps.defaults)),
      curves_(loadAdaptiveCurves(deps.defaults)),
      location_(loadAdaptiveLocation(deps.defaults)),
      night_(loadNightColor(deps.defaults)) {}

AdaptiveBrightness::~AdaptiveBrightness() {
    if (timer_) timer_->cancel();
    if (stepTask_) stepTask_->cancel();
}

void AdaptiveBrightness::start() {
    if (stored_ == AdaptiveMode::off || mode_ != AdaptiveMode::off) return;
    if (auto why = refusal(stored_)) {
        deps_.log.write("adaptive: " + std::string(adaptiveModeName(stored_)) + ": " + *why);
        return;
    }
    deps_.log.write("adaptive: " + std::string(adaptiveModeName(stored_)));
    run(stored_);
}

void AdaptiveBrightness::stop() {
    if (timer_) timer_->cancel();
    if (stepTask_) stepTask_->cancel();
    timer_.reset();
    stepTask_.reset();
    clearTints();
}

std::optional<std::string> AdaptiveBrightness::refusal(AdaptiveMode mode) {
    switch (mode) {
        case AdaptiveMode::sync:
            if (!deps_.host.builtinLevel()) return "no built-in display brightness to follow";
            break;
        case AdaptiveMode::sensor:
            if (!deps_.host.hasLightSensor() || !deps_.light.lux()) {
                return "no ambient light sensor on this machine";
            }
            break;
        case AdaptiveMode::schedule:
            if (!location_) return "no location set (latitude and longitude)";
            break;
        case AdaptiveMode::off:
            break;
    }
    return std::nullopt;
}

std::optional<std::string> AdaptiveBrightness::setMode(AdaptiveMode mode) {
    const std::string name(adaptiveModeName(mode));
    if (auto why = refusal(mode)) {
        deps_.log.write("adaptive: " + name + ": " + *why);
        return why;
    }
    stored_ = mode;
    saveAdaptiveMode(deps_.defaults, mode);
    if (mode != mode_) {
        deps_.log.write("adaptive: " + name);
        run(mode);
    }
    return std::nullopt;
}

void AdaptiveBrightness::run(AdaptiveMode mode) {
    deps_.host.adaptiveWillChange();
    stop();
    targets_.clear();
    heldUntil_.clear();
    input_.reset();
    acted_.reset();
    mode_ = mode;
    if (mode == AdaptiveMode::off) return;
    const double interval = intervalOf(mode);
    timer_ = deps_.scheduler.repeat(interval, interval / 10, [weak = weak_from_this()] {
        if (auto self = weak.lock()) self->sample(false);
    });
    sample(true);
}

std::optional<double> AdaptiveBrightness::readInput() {
    switch (mode_) {
        case AdaptiveMode::sync:
            return deps_.host.builtinLevel();
        case AdaptiveMode::sensor: {
            auto lux = deps_.light.lux();
            if (lux && (!std::isfinite(*lux) || *lux < 0)) return std::nullopt;
            return lux;
        }
        case AdaptiveMode::schedule:
            if (!location_) return std::nullopt;
            return solarElevation(deps_.clock.utcSeconds(), *location_);
        case AdaptiveMode::off:
            break;
    }
    return std::nullopt;
}

bool AdaptiveBrightness::withinHysteresis(double input) const {
    if (!acted_) return false;
    const double change = std::abs(input - *acted_);
    switch (mode_) {
        case AdaptiveMode::sensor:
            return change < kSensorHysteresis * std::max(*acted_, 1.0);
        case AdaptiveMode::schedule:
            return change < kScheduleHysteresis;
        case AdaptiveMode::off:
        case AdaptiveMode::sync:
            break;
    }
    return change < kSyncHysteresis;
}

void AdaptiveBrightness::sample(bool force) {
    const auto reading = readInput();
    if (!reading) return;  // a sensor that did not answer this time keeps the last targets
    if (input_ != reading) {
        deps_.host.adaptiveWillChange();
        input_ = reading;
    }
    // A monitor whose first scan ended since is taken in even while the input stands still.
    if (!force && withinHysteresis(*reading) && sameParticipants()) return;
    acted_ = reading;
    retarget();
}

bool AdaptiveBrightness::sameParticipants() const {
    std::set<DisplayID> now;
    for (const auto& display : participants())
        now.insert(display.id);
    std::set<DisplayID> targeted;
    for (const auto& [id, target] : targets_)
        targeted.insert(id);
    return now == targeted;
}

void AdaptiveBrightness::retarget() {
    if (!acted_) return;
    deps_.host.adaptiveWillChange();
    std::map<DisplayID, double> next;
    for (const auto& display : participants())
        next[display.id] = curve(display.key, mode_).at(*acted_);
    targets_ = std::move(next);
    updateTint();
    scheduleStep();
}

void AdaptiveBrightness::scheduleStep() {
    // Always one interval after the last write, so no display gets two writes within it.
    if (stepTask_) return;
    stepTask_ = deps_.scheduler.mainQueue().postAfter(kStepInterval, [weak = weak_from_this()] {
        auto self = weak.lock();
        if (!self) return;
        self->stepTask_.reset();
        self->step();
    });
}

void AdaptiveBrightness::step() {
    const double now = deps_.scheduler.uptime();
    bool more = false;
    for (const auto& [id, target] : targets_) {
        if (auto held = heldUntil_.find(id); held != heldUntil_.end() && held->second > now) {
            more = true;
            continue;
        }
        const double current = deps_.host.level(id);
        const double difference = target - current;
        if (std::abs(difference) < kSettled) continue;
        const double next = current + std::clamp(difference, -kLargestStep, kLargestStep);
        deps_.host.applyLevel(id, next);
        if (std::abs(target - next) >= kSettled) more = true;
    }
    if (more) scheduleStep();
}

void AdaptiveBrightness::updateTint() {
    if (mode_ != AdaptiveMode::schedule || !night_.on || !acted_) {
        clearTints();
        return;
    }
    const double day = daylight(*acted_);
    const ChannelGains gains = blend(colorTemperatureGains(night_.kelvin), ChannelGains{}, day);
    const bool none = closeGains(gains, ChannelGains{});
    for (const auto& display : participants()) {
        auto tinted = tints_.find(display.id);
        if (none) {
            if (tinted == tints_.end()) continue;
            tints_.erase(tinted);
            deps_.host.applyTint(display.id, std::nullopt);
            continue;
        }
        if (tinted != tints_.end() && closeGains(tinted->second, gains)) continue;
        tints_[display.id] = gains;
        deps_.host.applyTint(display.id, gains);
    }
}

void AdaptiveBrightness::clearTints() {
    for (const auto& [id, gains] : tints_)
        deps_.host.applyTint(id, std::nullopt);
    tints_.clear();
}

void AdaptiveBrightness::userChanged(DisplayID display, double level) {
    if (mode_ == AdaptiveMode::off || !input_ || !participates(display)) return;
    const std::string key = keyOf(display);
    AdaptiveCurve learned = curve(key, mode_);
    learned.correct(*input_, level);
    deps_.host.adaptiveWillChange();
    curves_[key][mode_] = learned.points();
    saveAdaptiveCurves(deps_.defaults, curves_);
    targets_[display] = std::clamp(level, 0.0, 1.0);
    heldUntil_[display] = deps_.scheduler.uptime() + kUserHold;
}

void AdaptiveBrightness::inputMayHaveChanged() {
    if (mode_ == AdaptiveMode::sync) sample(false);
}

void AdaptiveBrightness::displaysChanged() {
    if (mode_ != AdaptiveMode::off && acted_ && !sameParticipants()) retarget();
}

void AdaptiveBrightness::setParticipating(DisplayID display, bool on) {
    const std::string key = keyOf(display);
    if (key.empty() || excluded_.contains(key) == !on) return;
    deps_.host.adaptiveWillChange();
    if (on) {
        excluded_.erase(key);
    } else {
        excluded_.insert(key);
        targets_.erase(display);
        if (tints_.erase(display) > 0) deps_.host.applyTint(display, std::nullopt);
    }
    saveAdaptiveExcluded(deps_.defaults, excluded_);
    if (on) retarget();
}

void AdaptiveBrightness::setLocation(const GeoLocation& place) {
    if (!validLocation(place)) return;
    deps_.host.adaptiveWillChange();
    location_ = place;
    saveAdaptiveLocation(deps_.defaults, place);
    if (mode_ == AdaptiveMode::schedule) sample(true);
}

void AdaptiveBrightness::setNightColor(const NightColor& night) {
    deps_.host.adaptiveWillChange();
    night_ = night;
    night_.kelvin =
        std::clamp(std::isfinite(night.kelvin) ? night.kelvin : NightColor::kDefaultKelvin,
                   NightColor::kWarmest, NightColor::kCoolest);
    saveNightColor(deps_.defaults, night_);
    updateTint();
}

bool AdaptiveBrightness::participates(DisplayID display) const {
    const std::string key = keyOf(display);
    return !key.empty() && !excluded_.contains(key);
}

std::optional<double> AdaptiveBrightness::target(DisplayID display) const {
    const auto found = targets_.find(display);
    return found == targets_.end() ? std::nullopt : std::optional<double>(found->second);
}

std::vector<CurvePoint> AdaptiveBrightness::points(DisplayID display) const {
    const AdaptiveMode mode = mode_ == AdaptiveMode::off ? stored_ : mode_;
    if (mode == AdaptiveMode::off) return {};
    return curve(keyOf(display), mode).points();
}

AdaptiveCurve AdaptiveBrightness::curve(const std::string& key, AdaptiveMode mode) const {
    CurveShape shape = shapeOf(mode);
    if (auto display = curves_.find(key); display != curves_.end()) {
        if (auto learned = display->second.find(mode); learned != display->second.end())
            return {shape.scale, shape.nearby, learned->second};
    }
    return {shape.scale, shape.nearby, std::move(shape.start)};
}

std::vector<AdaptiveHost::Display> AdaptiveBrightness::participants() const {
    std::vector<AdaptiveHost::Display> list = deps_.host.adaptiveDisplays();
    std::erase_if(list, [&](const AdaptiveHost::Display& d) { return excluded_.contains(d.key); });
    return list;
}

std::string AdaptiveBrightness::keyOf(DisplayID display) const {
    for (const auto& d : deps_.host.adaptiveDisplays()) {
        if (d.id == display) return d.key;
    }
    return {};
}

nlohmann::json AdaptiveBrightness::statusJson() const {
    nlohmann::json displays = nlohmann::json::object();
    if (mode_ != AdaptiveMode::off) {
        for (const auto& display : participants()) {
            nlohmann::json points = nlohmann::json::array();
            const AdaptiveCurve shown = curve(display.key, mode_);
            for (const CurvePoint& p : shown.points())
                points.push_back({p.input, p.level});
            const auto aim = target(display.id);
            displays[std::to_string(display.id)] = {
                {"target", aim ? nlohmann::json(*aim) : nlohmann::json(nullptr)},
                {"points", std::move(points)}};
        }
    }
    return {{"mode", adaptiveModeName(mode_)},
            {"input", input_ ? nlohmann::json(*input_) : nlohmann::json(nullptr)},
            {"displays", std::move(displays)}};
}

}  // namespace lumora
