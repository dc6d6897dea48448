#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "logind/HingeSensor.h"
#include "logind/LogindClient.h"
#include "logind/LogindSignal.h"
#include "platform/LidSensor.h"

namespace lumora::lx {

// Where the lid sensor looks; tests point these at a temporary tree.
struct LidSensorPaths {
    std::filesystem::path iioDevices = "/sys/bus/iio/devices";
    std::filesystem::path inputDevices = "/sys/class/input";
};

// The lid: the hinge angle from an IIO hinge sensor where the machine has one, and open or
// closed from logind's LidClosed where the machine has a lid switch. The hardware is looked
// for once, at construction.
//
// LidClosed is false on a machine without a lid, so whether there is one comes from the
// kernel's input devices, as logind itself finds it. logind's HandleLidSwitch is only the
// configured reaction to the switch, set the same on machines without one, and is not used.
class LinuxLidSensor final : public LidSensor {
  public:
    explicit LinuxLidSensor(std::shared_ptr<LogindClient> logind, LidSensorPaths paths = {});

    [[nodiscard]] bool hasHingeSensor() const { return hinge_.has_value(); }
    // A lid switch that logind reports on.
    [[nodiscard]] bool hasLidSwitch() const { return lidSwitch_; }
    [[nodiscard]] bool available() const { return hasHingeSensor() || hasLidSwitch(); }

    // Nothing when there is neither a hinge sensor nor logind; 0 otherwise.
    std::optional<std::int32_t> open(ChangeHandler onChange) override;
    LidReading read(bool fresh) override;

  private:
    std::optional<bool> readLidClosed();
    void propertiesChanged(const QDBusMessage& message);

    std::shared_ptr<LogindClient> logind_;
    std::optional<HingeChannel> hinge_;
    bool lidSwitch_ = false;
    bool lidReadFailed_ = false;
    ChangeHandler onChange_;
    LidReading last_;
    std::unique_ptr<LogindSignal> changes_;
};

}  // namespace lumora::lx
