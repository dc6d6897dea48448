#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Platform.h"
#include "platform/Scheduler.h"

namespace lumora {
class Log;
}

namespace lumora::lx {

// What the session offers, read once from the environment.
struct LinuxSession {
    std::optional<std::string> x11Display;      // $DISPLAY
    std::optional<std::string> waylandDisplay;  // $WAYLAND_DISPLAY
    std::string desktop;                        // $XDG_CURRENT_DESKTOP

    static LinuxSession fromEnvironment(
        const std::function<std::optional<std::string>(const std::string&)>& variable);
};

// Which display server Lumora drives in this session. Under Wayland the X11 calls would act on
// the compatibility server, not the real outputs, so X11 is used only without Wayland.
enum class DisplayBackend {
    x11,
    kernel,  // read-only: the connected monitors from DRM, no configuration, gamma or keys
};
[[nodiscard]] DisplayBackend chooseDisplayBackend(const LinuxSession& session);

// The Linux machine: the display server of the session (X11 through RandR; elsewhere the
// kernel's list of monitors), DDC/CI over /dev/i2c-N, the sysfs backlight written through
// logind, power, lid and wake through logind, the lid angle from an IIO hinge sensor.
// Everything a part cannot do shows as an absent capability, never as a failed start.
std::unique_ptr<Platform> makeLinuxPlatform(Scheduler& scheduler, Log& log);

}  // namespace lumora::lx
