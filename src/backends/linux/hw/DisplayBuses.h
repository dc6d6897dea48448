#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumora::lx {

// An I2C adapter that carries a display's DDC lines.
struct DisplayBus {
    unsigned number = 0;  // N of /dev/i2c-N
    // The DRM connector's name ("DP-1", "HDMI-A-2") when the DRM tree links the bus to one.
    std::optional<std::string> connector;
    bool external = true;  // false for a built-in panel's bus
};

// The display buses under `sysfsRoot`, by bus number: the DDC bus of every DRM connector
// that is not disconnected, and, for graphics cards whose connectors link no bus (some
// proprietary drivers), the adapters whose names say they serve a display.
std::vector<DisplayBus> findDisplayBuses(const std::filesystem::path& sysfsRoot);

}  // namespace lumora::lx
