#pragma once

#include <filesystem>
#include <optional>

#include "hw/SysfsFiles.h"
#include "platform/AmbientLight.h"

namespace lumora::lx {

// The ambient light sensor of the industrial-I/O subsystem: the first
// /sys/bus/iio/devices/iio:deviceN (by number) with an illuminance channel. A processed
// in_illuminance_input is lux already; a raw one becomes (raw + offset) × scale, with the
// channel's own in_illuminance_offset/_scale or the device-wide in_offset/in_scale.
class IioLightSensor final : public AmbientLight {
  public:
    explicit IioLightSensor(const std::filesystem::path& sysfsRoot = kDefaultSysfsRoot);

    [[nodiscard]] bool available() const { return device_.has_value(); }
    std::optional<double> lux() override;

  private:
    std::optional<std::filesystem::path> device_;
};

}  // namespace lumora::lx
