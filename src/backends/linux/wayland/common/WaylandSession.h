#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumora::wl {

enum class WaylandSession {
    none,     // not a Wayland session
    gnome,    // Mutter: displays through org.gnome.Mutter.DisplayConfig
    wlroots,  // a compositor with the wlroots output-management protocol
    other,    // Wayland, but no display interface Lumora speaks
};

// What the probe looks at. The globals and bus names are empty when they could not be read.
struct SessionEnvironment {
    std::string waylandDisplay;         // WAYLAND_DISPLAY
    std::string currentDesktop;         // XDG_CURRENT_DESKTOP, a colon-separated list
    std::vector<std::string> globals;   // interface names the compositor advertises
    std::vector<std::string> busNames;  // names owned on the session bus
};

// The two variables from this process's environment; globals and bus names left empty.
SessionEnvironment sessionVariables();

// The compositor's own advertisements win over the desktop name: a sway nested in GNOME is a
// wlroots session even though Mutter owns its name on the bus.
WaylandSession detectWaylandSession(const SessionEnvironment& env);

std::string_view sessionName(WaylandSession session);

}  // namespace lumora::wl
