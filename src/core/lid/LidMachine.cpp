#include "lid/LidMachine.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "base/Check.h"

namespace lumora {

namespace {

// Sensor readings above this are implausible and count as a closed lid (angle 0).
constexpr std::int64_t kMaxPlausibleAngle = 300;

// A woken display is put back to sleep every resleepInterval, but one log line a minute is
// enough to show that something keeps waking it.
constexpr double kResleepLogInterval = 60;

// Whole seconds for a log line. Finite values outside the 64-bit range saturate (a stored
// configuration may legally hold 1e308); a non-finite delay cannot come from decoding, so it
// is a fault of the program.
std::int64_t wholeSeconds(double seconds) {
    if (!std::isfinite(seconds)) fatal("truncating a non-finite delay to whole seconds");
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (seconds >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
    if (seconds < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(seconds);
}

std::string angleText(const std::optional<std::int64_t>& angle) {
    return angle ? std::to_string(*angle) : "?";
}

}  // namespace

LidMachine::LidMachine(LidConfig config) : config_(std::move(config)) {}

void LidMachine::update(const LidInputs& inputs) {
    if (!inputs.angle) return;
    std::int64_t angle = *inputs.angle > kMaxPlausibleAngle ? 0 : *inputs.angle;
    if (angle >= config_.openAngle) {
        // Opening is immediate.
        lidClosed_ = false;
        closeSince_.reset();
    } else if (angle <= config_.closeAngle) {
        if (lidClosed_) return;
        if (!closeSince_) closeSince_ = inputs.now;
        if (inputs.now - *closeSince_ >= config_.closeDebounce) {
            lidClosed_ = true;
            closeSince_.reset();
        }
    } else if (!lidClosed_) {
        // Inside the band a closed lid stays closed; a closing attempt starts over.
        closeSince_.reset();
    }
}

std::vector<LidAction> LidMachine::tick(const LidInputs& inputs) {
    update(inputs);
    std::vector<LidAction> actions;
    // At start-up no mode is decided while a close is still being debounced.
    if (mode_ == LidMode::unknown && closeSince_) return actions;
    LidMode target = targetMode(inputs);
    if (target != mode_) enter(target, inputs, actions);
    enforce(inputs, actions);
    return actions;
}

LidMode LidMachine::targetMode(const LidInputs& inputs) const {
    if (!lidClosed_) return LidMode::open;
    // Without clamshell use a closed lid means sleep, even with external displays attached.
    if (inputs.externals >= 1 && config_.turnOffPanelWithExternal) return LidMode::closedExternal;
    return LidMode::closedAlone;
}

void LidMachine::enter(LidMode target, const LidInputs& inputs, std::vector<LidAction>& actions) {
    LidMode old = mode_;
    actions.push_back(LidAction::log(
        "mode " + std::string(rawValue(old)) + " -> " + std::string(rawValue(target)) + " (angle " +
        angleText(inputs.angle) + ", external " + std::to_string(inputs.externals) + ")"));
    if (old == LidMode::closedAlone && dimmed_) {
        actions.push_back(LidAction::dimBuiltin(false));
        dimmed_ = false;
    }
    mode_ = target;
    lastPanelTry_ = kLongAgo;
    sleepDeadline_.reset();
    if (target == LidMode::closedAlone) {
        resleeps_ = 0;
        lastResleep_ = kLongAgo;
        if (config_.sleepDelay > 0) sleepDeadline_ = inputs.now + config_.sleepDelay;
    } else if (target == LidMode::open && old != LidMode::unknown) {
        // Not on the first decision at start-up: nothing was put to sleep by us then.
        actions.push_back(LidAction::wakeDisplay());
    }
}

bool LidMachine::panelRetryDue(double now) const {
    return now - lastPanelTry_ >= config_.panelRetry;
}

void LidMachine::appendSetPanel(bool on, double now, std::vector<LidAction>& actions) {
    actions.push_back(LidAction::setPanel(on));
    lastPanelTry_ = now;
}

void LidMachine::enforce(const LidInputs& inputs, std::vector<LidAction>& actions) {
    switch (mode_) {
        case LidMode::unknown:
            return;
        case LidMode::open:
            if (config_.disconnectBuiltinWhenExternal && inputs.externals >= 1) {
                if (inputs.builtinOnline && panelRetryDue(inputs.now)) {
                    appendSetPanel(false, inputs.now, actions);
                }
            } else if (!inputs.builtinOnline && panelRetryDue(inputs.now)) {
                // An open lid always gets its panel back.
                appendSetPanel(true, inputs.now, actions);
            }
            return;
        case LidMode::closedExternal:
            if (inputs.builtinOnline && panelRetryDue(inputs.now)) {
                appendSetPanel(false, inputs.now, actions);
            }
            return;
        case LidMode::closedAlone:
            enforceClosedAlone(inputs, actions);
            return;
    }
}

void LidMachine::enforceClosedAlone(const LidInputs& inputs, std::vector<LidAction>& actions) {
    const double now = inputs.now;
    if (!inputs.builtinOnline) {
        // Bring the panel back first; nothing else is done for a panel that is off, the sleep
        // deadline included.
        if (panelRetryDue(now)) appendSetPanel(true, now, actions);
        return;
    }
    if (config_.dimWhenClosed && !dimmed_) {
        actions.push_back(LidAction::dimBuiltin(true));
        dimmed_ = true;
    }
    if (!inputs.builtinAsleep && now - lastResleep_ >= config_.resleepInterval) {
        lastResleep_ = now;
        if (resleeps_ == std::numeric_limits<std::int64_t>::max()) {
            fatal("lid display-sleep counter overflow");
        }
        ++resleeps_;
        if (resleeps_ == 1) {
            actions.push_back(LidAction::log("lid closed, nothing external: display sleep"));
        } else if (now - lastResleepLog_ >= kResleepLogInterval) {
            lastResleepLog_ = now;
            actions.push_back(LidAction::log(
                "display woke with the lid closed (HID tickle): display sleep again (" +
                std::to_string(resleeps_ - 1) + " so far)"));
        }
        actions.push_back(LidAction::displaySleep());
    }
    if (sleepDeadline_ && *sleepDeadline_ <= now) {
        actions.push_back(LidAction::log("lid closed " +
                                         std::to_string(wholeSeconds(config_.sleepDelay)) +
                                         " s without an external display: system sleep"));
        actions.push_back(LidAction::systemSleep());
        sleepDeadline_.reset();
        if (config_.sleepDelay > 0) sleepDeadline_ = now + config_.sleepDelay;
    }
}

std::vector<LidAction> LidMachine::didWake(double now) {
    if (mode_ != LidMode::closedAlone) return {};
    lastResleep_ = kLongAgo;
    const double delay = std::min(config_.sleepDelay, config_.wakeSleepDelay);
    // The message and the display sleep come even when timed system sleep is off.
    if (config_.sleepDelay > 0) sleepDeadline_ = now + delay;
    return {
        LidAction::log("woke with the lid closed and nothing external: display stays dark, system "
                       "sleep in " +
                       std::to_string(wholeSeconds(delay)) + " s"),
        LidAction::displaySleep()};
}

void LidMachine::update(const LidConfig& config, double now) {
    config_ = config;
    if (mode_ != LidMode::closedAlone) return;
    sleepDeadline_.reset();
    if (config_.sleepDelay > 0) sleepDeadline_ = now + config_.sleepDelay;
}

}  // namespace lumora
