#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "edid/StableDisplayID.h"
#include "platform/Types.h"

namespace lumora::lx {

// One display connector as the kernel's DRM sysfs shows it (/sys/class/drm/cardN-NAME).
struct DrmConnector {
    std::string name;  // "DP-1", "eDP-1", "HDMI-A-2"
    bool connected = false;
    bool enabled = false;  // driving a picture
    OutputIdentity identity;
    DisplayID id = 0;  // derived from the EDID (the connector name without one)
};

// Every connector of every card, in name order; identifiers as the display servers derive
// them, so DDC channels, stored settings and displays agree. Reads files only: safe on any
// thread.
std::vector<DrmConnector> readDrmConnectors(const std::filesystem::path& sysfsRoot);

// The display a connector drives, if it is connected.
std::optional<DisplayID> drmDisplayFor(const std::filesystem::path& sysfsRoot,
                                       const std::string& connector);

}  // namespace lumora::lx
