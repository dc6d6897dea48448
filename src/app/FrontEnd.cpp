#include "FrontEnd.h"

namespace lumora::app {

namespace {

#if !defined(__APPLE__)
// Tried in order; the last entry always starts, so a dead display server never aborts.
const char* const kWaylandFirst = "wayland;xcb;offscreen";
const char* const kX11First = "xcb;offscreen";

bool present(const AppPaths::Environment& environment, const std::string& name) {
    auto value = environment(name);
    return value && !value->empty();
}
#endif

}  // namespace

FrontEnd chooseFrontEnd(const CommandLine& cli, const AppPaths::Environment& environment) {
    FrontEnd out;
    if (cli.headless) return out;
    const bool showsPanel = cli.preview || cli.renderPanel.has_value();
#if defined(__APPLE__)
    (void)environment;
    (void)showsPanel;
    out.widgets = true;
#else
    out.widgets = true;
    // A platform chosen by hand (the tests' "offscreen", say) is taken as it is.
    if (present(environment, "QT_QPA_PLATFORM")) return out;
    const bool wayland = present(environment, "WAYLAND_DISPLAY");
    const bool x11 = present(environment, "DISPLAY");
    if (wayland || x11) {
        out.platform = wayland ? kWaylandFirst : kX11First;
        return out;
    }
    if (showsPanel) {
        out.platform = kOffscreenPlatform;
        if (cli.preview) {
            out.notice =
                "no display server (DISPLAY and WAYLAND_DISPLAY are unset); "
                "the preview window is drawn offscreen";
        }
        return out;
    }
    out.widgets = false;
    out.notice = "no display server (DISPLAY and WAYLAND_DISPLAY are unset); running headless";
#endif
    return out;
}

bool fellBackOffscreen(const FrontEnd& frontEnd, const std::string& platformName) {
    return frontEnd.platform && *frontEnd.platform != kOffscreenPlatform &&
           platformName == kOffscreenPlatform;
}

}  // namespace lumora::app
