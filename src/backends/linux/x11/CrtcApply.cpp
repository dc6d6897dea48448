#include "x11/CrtcApply.h"

#include <X11/extensions/Xrandr.h>

#include <algorithm>
#include <cmath>

namespace lumora::lx {

namespace {

using Resources = XReply<XRRScreenResources, XRRFreeScreenResources>;

// Without a size in millimetres from the server, the usual 96 dots per inch.
constexpr double kFallbackMMPerPixel = 25.4 / 96.0;

// Keeps the screen's dots per inch as it grows or shrinks.
int millimetres(std::uint32_t pixels, int currentPixels, int currentMM) {
    const double perPixel = currentPixels > 0 && currentMM > 0
                                ? static_cast<double>(currentMM) / currentPixels
                                : kFallbackMMPerPixel;
    return static_cast<int>(std::lround(pixels * perPixel));
}

class Applier {
  public:
    Applier(const XConnection& connection, XRRScreenResources* resources)
        : connection_(connection), display_(connection.display()), resources_(resources) {}

    ConfigStatus setSize(std::uint32_t width, std::uint32_t height) {
        const int screen = DefaultScreen(display_);
        ErrorTrap trap(connection_);
        XRRSetScreenSize(
            display_, connection_.root(), static_cast<int>(width), static_cast<int>(height),
            millimetres(width, DisplayWidth(display_, screen), DisplayWidthMM(display_, screen)),
            millimetres(height, DisplayHeight(display_, screen),
                        DisplayHeightMM(display_, screen)));
        return errorStatus(trap.sync());
    }

    ConfigStatus setCrtc(const CrtcSetting& s) {
        ErrorTrap trap(connection_);
        std::vector<RROutput> outputs(s.outputs.begin(), s.outputs.end());
        const Placement p = s.placement.value_or(Placement{});
        const Status status = XRRSetCrtcConfig(
            display_, resources_, s.crtc, CurrentTime, p.x, p.y, s.placement ? p.mode : None,
            s.placement ? p.rotation : RR_Rotate_0, outputs.empty() ? nullptr : outputs.data(),
            static_cast<int>(outputs.size()));
        if (const int error = trap.sync()) return errorStatus(error);
        return status == RRSetConfigSuccess ? kConfigOK : kRandrStatusBase + status;
    }

    ConfigStatus setPrimary(XId output) {
        ErrorTrap trap(connection_);
        XRRSetOutputPrimary(display_, connection_.root(), output);
        return errorStatus(trap.sync());
    }

  private:
    static ConfigStatus errorStatus(int error) {
        return error == 0 ? kConfigOK : kXErrorStatusBase + error;
    }

    const XConnection& connection_;
    Display* display_;
    XRRScreenResources* resources_;
};

}  // namespace

ConfigStatus applyScreen(const XConnection& connection, const RandrWorld& before,
                         const ScreenSetting& target) {
    Display* display = connection.display();
    ErrorTrap trap(connection);
    int minWidth = 0, minHeight = 0, maxWidth = 0, maxHeight = 0;
    XRRGetScreenSizeRange(display, connection.root(), &minWidth, &minHeight, &maxWidth, &maxHeight);
    std::uint32_t width = target.width, height = target.height;
    if (width == 0 || height == 0) {
        width = before.screenWidth;
        height = before.screenHeight;
    }
    if (maxWidth > 0 && (width > static_cast<std::uint32_t>(maxWidth) ||
                         height > static_cast<std::uint32_t>(maxHeight))) {
        return kConfigIllegalArgument;
    }
    width = std::max(width, static_cast<std::uint32_t>(std::max(minWidth, 0)));
    height = std::max(height, static_cast<std::uint32_t>(std::max(minHeight, 0)));

    Resources resources(XRRGetScreenResourcesCurrent(display, connection.root()));
    if (!resources) return kConfigUnavailable;
    Applier apply(connection, resources.get());
    const std::vector<CrtcSetting> now = currentCrtcs(before);
    auto current = [&](XId crtc) {
        auto found = std::find_if(now.begin(), now.end(),
                                  [crtc](const CrtcSetting& s) { return s.crtc == crtc; });
        return found == now.end() ? CrtcSetting{crtc} : *found;
    };

    // Off first: a CRTC that goes dark or hands its outputs on must let go of them.
    for (const CrtcSetting& s : target.crtcs) {
        const CrtcSetting was = current(s.crtc);
        if (was.placement && (!s.placement || was.outputs != s.outputs)) {
            if (ConfigStatus status = apply.setCrtc(CrtcSetting{s.crtc})) return status;
        }
    }
    const std::uint32_t growWidth = std::max(width, before.screenWidth);
    const std::uint32_t growHeight = std::max(height, before.screenHeight);
    if (growWidth != before.screenWidth || growHeight != before.screenHeight) {
        if (ConfigStatus status = apply.setSize(growWidth, growHeight)) return status;
    }
    for (const CrtcSetting& s : target.crtcs) {
        const CrtcSetting was = current(s.crtc);
        if (s.placement && s != was) {
            if (ConfigStatus status = apply.setCrtc(s)) return status;
        }
    }
    if (width != growWidth || height != growHeight) {
        if (ConfigStatus status = apply.setSize(width, height)) return status;
    }
    if (target.primary != before.primary) return apply.setPrimary(target.primary);
    return kConfigOK;
}

}  // namespace lumora::lx
