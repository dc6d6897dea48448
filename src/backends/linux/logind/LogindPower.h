#pragma once

#include <functional>
#include <memory>
#include <string>

#include "logind/LogindClient.h"
#include "platform/Power.h"

namespace lumora::lx {

// What the display server adds to logind: logind can neither blank nor wake the displays.
struct DisplayPowerHooks {
    // Forces the displays off (on X11: DPMS). Empty: display sleep is not available.
    std::function<PowerRequest()> sleep;
    // Forces them back on. Empty: telling logind about the user is all there is.
    std::function<void()> wake;
};

// Power through logind: the idle inhibitor, suspend and the session's idle hint, plus the
// display server's hooks for display sleep and wake.
class LogindPower final : public Power {
  public:
    // Monotonic seconds; injected so that tests can step over the display-sleep window.
    using Clock = std::function<double()>;

    LogindPower(std::shared_ptr<LogindClient> logind, DisplayPowerHooks displays = {},
                Clock clock = monotonicSeconds);

    // Whether logind answers (display sleep depends only on the hooks).
    [[nodiscard]] bool available() const { return logind_->available(); }
    [[nodiscard]] bool canSleepDisplays() const { return static_cast<bool>(displays_.sleep); }

    std::unique_ptr<SleepInhibition> inhibitIdleSleep(const std::string& reason) override;
    PowerRequest sleepDisplays() override;
    PowerRequest sleepSystem() override;
    void declareUserActivity(const std::string& reason) override;

    static double monotonicSeconds();

  private:
    std::shared_ptr<LogindClient> logind_;
    DisplayPowerHooks displays_;
    Clock clock_;
    // Until then the displays are still going down from the last request.
    double displaysGoingDownUntil_ = 0;
};

}  // namespace lumora::lx
