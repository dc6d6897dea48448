#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "display/Brightness.h"
#include "display/Displays.h"
#include "lid/LidAction.h"
#include "lid/LidConfig.h"
#include "lid/LidMachine.h"
#include "log/Log.h"
#include "platform/Backlight.h"
#include "platform/Defaults.h"
#include "platform/DisplayServer.h"
#include "platform/LidSensor.h"
#include "platform/Power.h"
#include "platform/Scheduler.h"
#include "platform/SystemEvents.h"

namespace lumora {

// Connects the lid machine to the machine it runs on: samples the lid-angle sensor and the
// displays once a second and on every event that may change the picture, and performs the
// actions the machine answers with. Main thread only.
//
// Timer, event handlers and delayed work hold the controller weakly: once it is gone they do
// nothing. It acts only between start() and shutdown().
class LidController : public std::enable_shared_from_this<LidController> {
  public:
    // The ports and services the controller uses; all of them must outlive it.
    struct Deps {
        Scheduler& scheduler;
        DisplayServer& displayServer;  // reconfiguration events
        Displays& displays;
        Backlight& backlight;
        Power& power;
        LidSensor& sensor;
        SystemEvents& systemEvents;
        Defaults& defaults;
        Log& log;
    };

    // The built-in brightness while the lid logic keeps the panel dimmed (a double in 0…1).
    static constexpr const char* kSavedBrightnessKey = "lid.savedBrightness";
    static constexpr double kTickInterval = 1.0;
    // Lets the platform bundle the tick with other wake-ups; the lid machine's timings are
    // all far coarser than this.
    static constexpr double kTickTolerance = 0.2;
    // The sensor does not report every change, so every this many ticks it is asked.
    static constexpr std::int64_t kPollEveryTicks = 5;
    // A second user-activity nudge this long after the first: the first may come while the
    // panel is still being switched back on.
    static constexpr double kSecondWakeDelay = 2.0;
    static constexpr const char* kWakeActivityName = "Lumora: lid opened";
    // A lid that only tells open or closed (a lid switch) is fed to the machine as these
    // angles: well inside the closed and the open band of any configuration.
    static constexpr std::int64_t kSwitchClosedAngle = 0;
    static constexpr std::int64_t kSwitchOpenAngle = 180;

    // Inert until start(): no platform access here.
    static std::shared_ptr<LidController> create(LidConfig config, Deps deps);
    ~LidController();
    LidController(const LidController&) = delete;
    LidController& operator=(const LidController&) = delete;

    // Opens the sensor, installs the timer and the event handlers, reads the angle, logs the
    // start line and takes the first tick; restores a dim left behind while open.
    void start();
    // New tuning: restarts the system-sleep countdown, logs the configuration, ticks.
    void update(const LidConfig& config);
    // Stops the timer and gives back the panel and its brightness.
    void shutdown();

    // Last angle read, in degrees; nothing until a reading succeeded (and never for a lid
    // that only has a switch).
    [[nodiscard]] std::optional<std::int64_t> angle() const { return angle_; }
    [[nodiscard]] const LidMachine& machine() const { return machine_; }
    // Called after a tick in which the machine's mode changed.
    void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

  private:
    // Only create() can make one, so every controller is owned by a shared_ptr.
    class Passkey {
        explicit Passkey() = default;
        friend class LidController;
    };

  public:
    LidController(Passkey, LidConfig config, Deps deps);

  private:
    void openSensor();
    void readAngle();
    void tick();
    void onTimer();
    void take(const LidReading& reading);
    // What the machine is fed: the angle, else the switch as an angle.
    [[nodiscard]] std::optional<std::int64_t> machineAngle() const;
    void onWake();
    void perform(const std::vector<LidAction>& actions);
    void perform(const LidAction& action);
    void dim();
    void restoreDim();
    void declareWake();
    void logFailure(const PowerRequest& request);

    LidMachine machine_;
    Deps deps_;
    Brightness brightness_;
    std::optional<std::int64_t> angle_;
    std::optional<bool> closed_;  // from a lid switch
    std::function<void()> onChange_;
    bool sensorManager_ = false;  // the platform could create a sensor manager
    TaskHandle timer_;
    std::vector<SystemEvents::Token> observers_;
    std::optional<int> reconfiguration_;
    std::int64_t ticks_ = 0;
    enum class Phase { idle, running, stopped };
    Phase phase_ = Phase::idle;
};

}  // namespace lumora
