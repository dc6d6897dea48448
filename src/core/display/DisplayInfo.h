#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "display/DisplayMode.h"
#include "platform/Types.h"

namespace lumora {

// One display as listed: an online display, one the program switched off, or the
// placeholder of an absent built-in panel.
struct DisplayInfo {
    DisplayID id = 0;
    std::string name;
    bool isBuiltin = false;
    bool isMain = false;     // holds the menu bar
    bool isVirtual = false;  // one of the program's own virtual displays
    bool isOnline = false;
    bool isAsleep = false;            // asleep, or not drawing because it is not online
    std::optional<DisplayMode> mode;  // absent when there is none or the display is not online
    std::int64_t rotation = 0;        // degrees
    std::uint32_t vendor = 0;
    std::uint32_t model = 0;
    std::uint32_t serial = 0;

    friend bool operator==(const DisplayInfo&, const DisplayInfo&) = default;
};

}  // namespace lumora
