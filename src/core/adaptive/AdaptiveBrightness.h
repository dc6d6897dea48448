#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "adaptive/AdaptiveCurve.h"
#include "adaptive/AdaptiveMode.h"
#include "adaptive/AdaptiveSettings.h"
#include "adaptive/Sun.h"
#include "log/Log.h"
#include "platform/AmbientLight.h"
#include "platform/Defaults.h"
#include "platform/Scheduler.h"
#include "platform/Types.h"
#include "platform/WallClock.h"

namespace lumora {

// What adaptive brightness needs of the application: the displays, their brightness and
// their colour. Main thread.
class AdaptiveHost {
  public:
    struct Display {
        DisplayID id = 0;
        std::string key;  // persistent across starts and ports
    };

    virtual ~AdaptiveHost() = default;
    // The online external displays whose brightness can be set.
    [[nodiscard]] virtual std::vector<Display> adaptiveDisplays() const = 0;
    // A fresh reading of the built-in display's brightness; nothing without one.
    [[nodiscard]] virtual std::optional<double> builtinLevel() = 0;
    [[nodiscard]] virtual bool hasLightSensor() const = 0;
    [[nodiscard]] virtual double level(DisplayID display) const = 0;
    // Sets a brightness that is not the user's choice (no correction follows).
    virtual void applyLevel(DisplayID display, double level) = 0;
    // Tints the display's software colour on top of the user's own; nothing: no tint.
    virtual void applyTint(DisplayID display, const std::optional<ChannelGains>& tint) = 0;
    // Before anything the status or the panel shows changes.
    virtual void adaptiveWillChange() = 0;
};

// Brightness that follows the built-in display, the room's light or the sun, through one
// learned curve per display and mode. Samples its input on a timer (and at once when the
// built-in display changes), ignores changes within the hysteresis, and walks each display
// toward its target in small steps, one write per display per step interval. A brightness
// the user sets on a participating display is a correction the curve learns and keeps; for a
// while after it the display is left alone, so a slider being dragged is never fought.
//
// Main thread only. Timers hold the object weakly.
class AdaptiveBrightness : public std::enable_shared_from_this<AdaptiveBrightness> {
  public:
    struct Deps {
        Scheduler& scheduler;
        Defaults& defaults;
        Log& log;
        AmbientLight& light;
        WallClock& clock;
        AdaptiveHost& host;
    };

    static constexpr double kSyncInterval = 1.0;
    static constexpr double kSensorInterval = 2.0;
    static constexpr double kScheduleInterval = 60.0;
    static constexpr double kStepInterval = 0.2;
    static constexpr double kLargestStep = 0.05;
    // Closer than this to the target counts as there: half a DDC percent, so a monitor ends
    // on the percentage nearest its target.
    static constexpr double kSettled = 0.005;
    static constexpr double kUserHold = 3.0;
    static constexpr double kSyncHysteresis = 0.03;
    static constexpr double kSensorHysteresis = 0.1;     // of the last lux
    static constexpr double kScheduleHysteresis = 0.36;  // degrees: 3 % of the twilight
    static constexpr double kTintChange = 0.005;

    static std::shared_ptr<AdaptiveBrightness> create(Deps deps);
    ~AdaptiveBrightness();
    AdaptiveBrightness(const AdaptiveBrightness&) = delete;
    AdaptiveBrightness& operator=(const AdaptiveBrightness&) = delete;

    // Runs the stored mode (loaded at creation); one the machine cannot follow now is logged
    // and runs as off (the stored choice stays for a start where it can).
    void start();
    void stop();

    // Nothing when taken; else why not, as logged.
    std::optional<std::string> setMode(AdaptiveMode mode);
    void setParticipating(DisplayID display, bool on);
    void setLocation(const GeoLocation& place);
    void setNightColor(const NightColor& night);

    // The user set a display's brightness.
    void userChanged(DisplayID display, double level);
    // The built-in display's brightness may have changed; followed at once in sync mode.
    void inputMayHaveChanged();
    // The online displays changed: a display new to the mode gets its target at once.
    void displaysChanged();

    [[nodiscard]] AdaptiveMode mode() const { return mode_; }
    [[nodiscard]] std::optional<double> input() const { return input_; }
    [[nodiscard]] bool participates(DisplayID display) const;
    [[nodiscard]] std::optional<GeoLocation> location() const { return location_; }
    [[nodiscard]] NightColor nightColor() const { return night_; }
    [[nodiscard]] std::optional<double> target(DisplayID display) const;
    // The points of the display's curve in the current mode (the starting curve if none
    // learned).
    [[nodiscard]] std::vector<CurvePoint> points(DisplayID display) const;
    // {"mode", "input", "displays": {"ID": {"target", "points": [[input, level]...]}}}
    [[nodiscard]] nlohmann::json statusJson() const;

  private:
    class Passkey {
        explicit Passkey() = default;
        friend class AdaptiveBrightness;
    };

  public:
    AdaptiveBrightness(Passkey, Deps deps);

  private:
    [[nodiscard]] std::optional<std::string> refusal(AdaptiveMode mode);
    void run(AdaptiveMode mode);
    [[nodiscard]] std::optional<double> readInput();
    [[nodiscard]] bool withinHysteresis(double input) const;
    void sample(bool force);
    void retarget();
    [[nodiscard]] bool sameParticipants() const;
    void scheduleStep();
    void step();
    void updateTint();
    void clearTints();
    [[nodiscard]] AdaptiveCurve curve(const std::string& key, AdaptiveMode mode) const;
    [[nodiscard]] std::vector<AdaptiveHost::Display> participants() const;
    [[nodiscard]] std::string keyOf(DisplayID display) const;

    Deps deps_;
    AdaptiveMode stored_ = AdaptiveMode::off;
    AdaptiveMode mode_ = AdaptiveMode::off;
    std::set<std::string> excluded_;
    AdaptiveCurves curves_;
    std::optional<GeoLocation> location_;
    NightColor night_;

    std::optional<double> input_;  // last reading
    std::optional<double> acted_;  // the reading the targets were computed from
    std::map<DisplayID, double> targets_;
    std::map<DisplayID, double> heldUntil_;  // uptime
    std::map<DisplayID, ChannelGains> tints_;
    TaskHandle timer_;
    TaskHandle stepTask_;
};

}  // namespace lumora
