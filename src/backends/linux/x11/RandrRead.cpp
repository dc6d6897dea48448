#include "x11/RandrRead.h"

#include <X11/Xatom.h>
#include <X11/extensions/Xrandr.h>

#include <span>

namespace lumora::lx {

namespace {

// The EDID property holds the base block and its extensions; 32-bit units, as Xlib counts.
constexpr long kEdidLongs = 256;

using Resources = XReply<XRRScreenResources, XRRFreeScreenResources>;
using OutputInfo = XReply<XRROutputInfo, XRRFreeOutputInfo>;
using CrtcInfo = XReply<XRRCrtcInfo, XRRFreeCrtcInfo>;

std::optional<EdidInfo> readEdid(Display* display, RROutput output, Atom edidAtom) {
    if (edidAtom == None) return std::nullopt;
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long remaining = 0;
    unsigned char* data = nullptr;
    const int status =
        XRRGetOutputProperty(display, output, edidAtom, 0, kEdidLongs, False, False,
                             AnyPropertyType, &type, &format, &count, &remaining, &data);
    XReply<unsigned char, XFree> owned(data);
    if (status != Success || format != 8 || !data) return std::nullopt;
    return parseEdid(std::span<const std::uint8_t>(data, count));
}

ModeTiming timing(const XRRModeInfo& m) {
    return ModeTiming{m.id, m.width, m.height, m.dotClock, m.hTotal, m.vTotal, m.modeFlags};
}

}  // namespace

std::optional<RandrWorld> readRandrWorld(const XConnection& connection) {
    if (connection.lost()) return std::nullopt;
    Display* display = connection.display();
    ErrorTrap trap(connection);
    Resources resources(XRRGetScreenResourcesCurrent(display, connection.root()));
    if (!resources) return std::nullopt;

    RandrWorld world;
    world.configTimestamp = resources->configTimestamp;
    for (const XRRModeInfo& m : std::span(resources->modes, resources->nmode))
        world.modes.push_back(timing(m));

    for (RRCrtc id : std::span(resources->crtcs, resources->ncrtc)) {
        CrtcInfo info(XRRGetCrtcInfo(display, resources.get(), id));
        if (!info) continue;
        CrtcState crtc{id,
                       info->x,
                       info->y,
                       info->width,
                       info->height,
                       info->mode,
                       static_cast<std::uint16_t>(info->rotation)};
        crtc.outputs.assign(info->outputs, info->outputs + info->noutput);
        crtc.possible.assign(info->possible, info->possible + info->npossible);
        const int gammaSize = XRRGetCrtcGammaSize(display, id);
        crtc.gammaSize = gammaSize > 0 ? static_cast<std::size_t>(gammaSize) : 0;
        world.crtcs.push_back(std::move(crtc));
    }

    const Atom edidAtom = XInternAtom(display, RR_PROPERTY_RANDR_EDID, True);
    for (RROutput id : std::span(resources->outputs, resources->noutput)) {
        OutputInfo info(XRRGetOutputInfo(display, resources.get(), id));
        if (!info) continue;
        OutputState output{id, std::string(info->name, static_cast<std::size_t>(info->nameLen)),
                           info->connection == RR_Connected, info->crtc};
        output.crtcs.assign(info->crtcs, info->crtcs + info->ncrtc);
        output.modes.assign(info->modes, info->modes + info->nmode);
        output.mmWidth = info->mm_width;
        output.mmHeight = info->mm_height;
        output.edid = readEdid(display, id, edidAtom);
        world.outputs.push_back(std::move(output));
    }

    world.primary = XRRGetOutputPrimary(display, connection.root());
    Window root = None;
    int x = 0, y = 0;
    unsigned width = 0, height = 0, border = 0, depth = 0;
    if (XGetGeometry(display, connection.root(), &root, &x, &y, &width, &height, &border, &depth)) {
        world.screenWidth = width;
        world.screenHeight = height;
    }
    if (trap.sync() != 0 && connection.lost()) return std::nullopt;
    return world;
}

}  // namespace lumora::lx
