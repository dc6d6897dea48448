#include "wayland/common/WaylandSession.h"

#include <algorithm>
#include <cstdlib>

namespace lumora::wl {

namespace {

constexpr std::string_view kWlrootsOutputManager = "zwlr_output_manager_v1";
// Mutter's private shell interface: present on every Mutter compositor, on no other.
constexpr std::string_view kMutterGlobal = "gtk_shell1";
constexpr std::string_view kMutterDisplayConfig = "org.gnome.Mutter.DisplayConfig";
constexpr std::string_view kGnomeDesktop = "GNOME";

bool contains(const std::vector<std::string>& list, std::string_view name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

bool desktopNames(const std::string& desktops, std::string_view wanted) {
    std::size_t start = 0;
    while (start <= desktops.size()) {
        const std::size_t end = std::min(desktops.find(':', start), desktops.size());
        if (std::string_view(desktops).substr(start, end - start) == wanted) return true;
        start = end + 1;
    }
    return false;
}

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

}  // namespace

SessionEnvironment sessionVariables() {
    SessionEnvironment env;
    env.waylandDisplay = variable("WAYLAND_DISPLAY");
    env.currentDesktop = variable("XDG_CURRENT_DESKTOP");
    return env;
}

WaylandSession detectWaylandSession(const SessionEnvironment& env) {
    if (env.waylandDisplay.empty()) return WaylandSession::none;
    if (contains(env.globals, kWlrootsOutputManager)) return WaylandSession::wlroots;
    const bool mutterOnBus = contains(env.busNames, kMutterDisplayConfig);
    // Without the globals (the probe could not connect) the desktop name has to vouch for it.
    const bool mutterCompositor = env.globals.empty()
                                      ? desktopNames(env.currentDesktop, kGnomeDesktop)
                                      : contains(env.globals, kMutterGlobal);
    if (mutterOnBus && mutterCompositor) return WaylandSession::gnome;
    return WaylandSession::other;
}

std::string_view sessionName(WaylandSession session) {
    switch (session) {
        case WaylandSession::none:
            return "none";
        case WaylandSession::gnome:
            return "gnome";
        case WaylandSession::wlroots:
            return "wlroots";
        case WaylandSession::other:
            return "other";
    }
    return "other";
}

}  // namespace lumora::wl
