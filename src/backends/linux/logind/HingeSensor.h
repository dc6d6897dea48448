#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace lumora::lx {

// The hinge-angle channel of an IIO sensor: the files to read, as found in sysfs.
struct HingeChannel {
    std::filesystem::path device;
    std::filesystem::path raw;
    std::filesystem::path scale;   // empty when the channel has none
    std::filesystem::path offset;  // empty when the channel has none
};

// The first hinge sensor under `iioDevices` (normally /sys/bus/iio/devices), in device order:
// a device named "hinge", a channel labelled "hinge", or a device with an in_angl_raw and
// in_angl_scale pair. Nothing when there is none.
std::optional<HingeChannel> findHingeSensor(const std::filesystem::path& iioDevices);

// The hinge angle in whole degrees; nothing when a file is unreadable or holds junk, or the
// angle is not one a hinge can have.
std::optional<std::int64_t> readHingeDegrees(const HingeChannel& channel);

}  // namespace lumora::lx
