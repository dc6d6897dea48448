#include "lid/LidController.h"

#include <algorithm>
#include <utility>

namespace lumora {

namespace {

constexpr std::int32_t kSensorOpenOK = 0;

std::string angleText(const std::optional<std::int64_t>& angle, const char* absent) {
    return angle ? std::to_string(*angle) : std::string(absent);
}

}  // namespace

std::shared_ptr<LidController> LidController::create(LidConfig config, Deps deps) {
    return std::make_shared<LidController>(Passkey{}, std::move(config), deps);
}

LidController::LidController(Passkey, LidConfig config, Deps deps)
    : machine_(std::move(config)), deps_(deps), brightness_(deps.backlight) {}

LidController::~LidController() {
    if (timer_) timer_->cancel();
    if (reconfiguration_) deps_.displayServer.removeReconfigurationHandler(*reconfiguration_);
    for (SystemEvents::Token token : observers_)
        deps_.systemEvents.removeObserver(token);
}

void LidController::start() {
    if (phase_ != Phase::idle) return;
    phase_ = Phase::running;
    const std::weak_ptr<LidController> weak = weak_from_this();

    openSensor();
    timer_ = deps_.scheduler.repeat(kTickInterval, kTickTolerance, [weak] {
        if (auto self = weak.lock()) self->onTimer();
    });
    // Reconfiguration events may come on any thread; the tick itself runs on the main queue.
    WorkQueue& main = deps_.scheduler.mainQueue();
    reconfiguration_ =
        deps_.displayServer.addReconfigurationHandler([weak, &main](DisplayID, DisplayChange) {
            main.post([weak] {
                if (auto self = weak.lock()) self->tick();
            });
        });
    observers_.push_back(deps_.systemEvents.addObserver(SystemEvent::didWake, [weak] {
        if (auto self = weak.lock()) self->onWake();
    }));
    observers_.push_back(deps_.systemEvents.addObserver(SystemEvent::screensDidWake, [weak] {
        if (auto self = weak.lock()) self->tick();
    }));

    readAngle();
    const Displays::Snapshot snap = deps_.displays.snapshot();
    deps_.log.write("lid: start, angle " + angleText(angle_, "none") + ", external " +
                    std::to_string(snap.externals) + ", built-in " +
                    (snap.builtinOnline ? "online" : "offline") + ", sensor " +
                    (sensorManager_ ? "ok" : "MISSING") + ", config " +
                    machine_.config().describe());
    tick();
    // A dim left behind, for example by a crash while the lid was closed.
    if (machine_.mode() == LidMode::open && deps_.defaults.contains(kSavedBrightnessKey)) {
        perform({LidAction::dimBuiltin(false)});
    }
}

void LidController::update(const LidConfig& config) {
    machine_.update(config, deps_.scheduler.uptime());
    deps_.log.write("lid: config " + config.describe());
    tick();
}

void LidController::shutdown() {
    phase_ = Phase::stopped;
    if (timer_) timer_->cancel();
    if (deps_.defaults.contains(kSavedBrightnessKey)) perform({LidAction::dimBuiltin(false)});
    // Never leave the machine without its panel.
    const DisplayID builtin = deps_.displays.builtinID();
    if (!deps_.displays.snapshot().builtinOnline && builtin != 0) {
        deps_.displays.setEnabled(builtin, true, /*quiet=*/false);
    }
}

void LidController::openSensor() {
    const std::weak_ptr<LidController> weak = weak_from_this();
    const auto status = deps_.sensor.open([weak](const LidReading& reading) {
        if (auto self = weak.lock()) {
            self->take(reading);
            self->tick();
        }
    });
    sensorManager_ = status.has_value();
    // The sensor is kept either way: a failed open simply never delivers values.
    if (status && *status != kSensorOpenOK) {
        deps_.log.write("lid: sensor open failed (" + std::to_string(*status) + ")");
    }
}

void LidController::readAngle() {
    if (!sensorManager_) return;
    take(deps_.sensor.read(/*fresh=*/true));
}

// A failed read leaves the last values in place.
void LidController::take(const LidReading& reading) {
    if (reading.angle) angle_ = reading.angle;
    if (reading.closed) closed_ = reading.closed;
}

std::optional<std::int64_t> LidController::machineAngle() const {
    if (angle_) return angle_;
    if (closed_) return *closed_ ? kSwitchClosedAngle : kSwitchOpenAngle;
    return std::nullopt;
}

void LidController::onTimer() {
    if (phase_ != Phase::running) return;
    ++ticks_;
    if (ticks_ % kPollEveryTicks == 0) readAngle();
    tick();
}

void LidController::onWake() {
    if (phase_ != Phase::running) return;
    deps_.log.write(std::string("system woke (lid ") + (machine_.lidClosed() ? "closed" : "open") +
                    ", angle " + angleText(angle_, "?") + ")");
    readAngle();
    perform(machine_.didWake(deps_.scheduler.uptime()));
    tick();
}

void LidController::tick() {
    if (phase_ != Phase::running) return;
    const Displays::Snapshot snap = deps_.displays.snapshot();
    const LidMode before = machine_.mode();
    const LidInputs inputs{deps_.scheduler.uptime(), machineAngle(), snap.externals,
                           snap.builtinOnline, snap.builtinAsleep};
    perform(machine_.tick(inputs));
    if (machine_.mode() != before && onChange_) onChange_();
}

void LidController::perform(const std::vector<LidAction>& actions) {
    for (const LidAction& action : actions)
        perform(action);
}

void LidController::perform(const LidAction& action) {
    switch (action.kind) {
        case LidAction::Kind::log:
            deps_.log.write("lid: " + action.message);
            break;
        case LidAction::Kind::setPanel:
            if (const DisplayID builtin = deps_.displays.builtinID(); builtin != 0) {
                deps_.displays.setEnabled(builtin, action.on, /*quiet=*/false);
            }
            break;
        case LidAction::Kind::dimBuiltin:
            action.on ? dim() : restoreDim();
            break;
        case LidAction::Kind::displaySleep:
            // The port does nothing more while an earlier display sleep is under way.
            logFailure(deps_.power.sleepDisplays());
            break;
        case LidAction::Kind::wakeDisplay:
            declareWake();
            break;
        case LidAction::Kind::systemSleep:
            logFailure(deps_.power.sleepSystem());
            break;
    }
}

void LidController::dim() {
    const DisplayID builtin = deps_.displays.builtinID();
    if (builtin == 0) return;
    // Only the first dim saves: a repeated one would save the 0 it set itself. A stored value
    // that is no number is no brightness to keep and gets replaced.
    if (!deps_.defaults.number(kSavedBrightnessKey)) {
        if (auto level = brightness_.builtin(builtin)) {
            deps_.defaults.setNumber(kSavedBrightnessKey, static_cast<double>(*level));
        }
    }
    brightness_.setBuiltin(builtin, 0.0f);
}

void LidController::restoreDim() {
    const DisplayID builtin = deps_.displays.builtinID();
    if (builtin == 0) return;
    const auto saved = deps_.defaults.number(kSavedBrightnessKey);
    if (!saved) return;
    brightness_.setBuiltin(builtin, static_cast<float>(std::clamp(*saved, 0.0, 1.0)));
    deps_.defaults.remove(kSavedBrightnessKey);
}

void LidController::declareWake() {
    deps_.power.declareUserActivity(kWakeActivityName);
    const std::weak_ptr<LidController> weak = weak_from_this();
    deps_.scheduler.mainQueue().postAfter(kSecondWakeDelay, [weak] {
        if (auto self = weak.lock()) self->deps_.power.declareUserActivity(kWakeActivityName);
    });
}

// Logged and forgotten: the machine's retry timing asks again later.
void LidController::logFailure(const PowerRequest& request) {
    if (!request.started) deps_.log.write("lid: " + request.error);
}

}  // namespace lumora
