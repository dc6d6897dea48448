#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "lid/LidAction.h"
#include "lid/LidConfig.h"
#include "lid/LidInputs.h"
#include "lid/LidMode.h"

namespace lumora {

// The pure decision core of the lid feature: fed one sample at a time, it answers with the
// ordered actions its controller is to perform. It reads no clock (time is LidInputs::now),
// never sleeps and never touches the platform, so recorded inputs drive it completely.
// Not thread-safe: driven from the controller's thread only.
class LidMachine {
  public:
    explicit LidMachine(LidConfig config);

    // The main entry, called for every sample.
    std::vector<LidAction> tick(const LidInputs& inputs);
    // Called once after the system woke from sleep, before the next tick.
    std::vector<LidAction> didWake(double now);
    // Replaces the configuration; while closed alone the system-sleep countdown restarts.
    void update(const LidConfig& config, double now);

    [[nodiscard]] const LidConfig& config() const { return config_; }
    [[nodiscard]] LidMode mode() const { return mode_; }
    [[nodiscard]] bool lidClosed() const { return lidClosed_; }
    [[nodiscard]] std::optional<double> sleepDeadline() const { return sleepDeadline_; }
    [[nodiscard]] bool dimmedNow() const { return dimmed_; }

  private:
    // Minus infinity makes the first rate-limited command of any state due at once.
    static constexpr double kLongAgo = -std::numeric_limits<double>::infinity();

    // The debounced lid state, from the angle alone.
    void update(const LidInputs& inputs);
    // The duties of the current mode, appended to the list being built.
    void enforce(const LidInputs& inputs, std::vector<LidAction>& actions);
    void enforceClosedAlone(const LidInputs& inputs, std::vector<LidAction>& actions);
    [[nodiscard]] LidMode targetMode(const LidInputs& inputs) const;
    void enter(LidMode target, const LidInputs& inputs, std::vector<LidAction>& actions);
    [[nodiscard]] bool panelRetryDue(double now) const;
    void appendSetPanel(bool on, double now, std::vector<LidAction>& actions);

    LidConfig config_;
    LidMode mode_ = LidMode::unknown;
    bool lidClosed_ = false;
    std::optional<double> sleepDeadline_;
    std::optional<double> closeSince_;  // start of the current closing attempt
    double lastPanelTry_ = kLongAgo;
    double lastResleep_ = kLongAgo;
    bool dimmed_ = false;        // dimBuiltin(true) issued and not yet undone
    std::int64_t resleeps_ = 0;  // display sleeps since entering closedAlone
    double lastResleepLog_ = kLongAgo;
};

}  // namespace lumora
