#pragma once

#include <IOKit/pwr_mgt/IOPMLib.h>

#include "decode/PowerTool.h"
#include "platform/Power.h"

namespace lumora::mac {

// Power through power-management assertions and the system's power tool.
class MacPower final : public Power {
  public:
    MacPower() = default;
    ~MacPower() override;
    MacPower(const MacPower&) = delete;
    MacPower& operator=(const MacPower&) = delete;

    std::unique_ptr<SleepInhibition> inhibitIdleSleep(const std::string& reason) override;
    PowerRequest sleepDisplays() override;
    PowerRequest sleepSystem() override;
    void declareUserActivity(const std::string& reason) override;

    [[nodiscard]] bool canSleep() const { return tool_.installed(); }

  private:
    PowerTool tool_;
    // Reused for every declaration so that repeated activity updates one assertion.
    IOPMAssertionID activity_ = kIOPMNullAssertionID;
};

}  // namespace lumora::mac
