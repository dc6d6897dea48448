#include "x11/X11DisplayServer.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>
#include <X11/extensions/dpms.h>

#include <algorithm>
#include <cmath>

#include "x11/CrtcApply.h"
#include "x11/RandrRead.h"
#include "x11/X11Configuration.h"
#include "x11/XConnection.h"

namespace lumora::lx {

namespace {

// Primary outputs, CRTC gamma of any size and the cheap resource query came with RandR 1.3.
constexpr int kNeededMinor = 3;
// The port hands out at most this many displays.
constexpr std::size_t kMaxDisplays = 32;
// Reading the server takes round trips during which more events may come in; a few reads in a
// row catch a change made in several steps, and whatever is still queued waits for the next call.
constexpr int kMaxRereads = 4;
constexpr double kGammaMax = 65535.0;

using Gamma = XReply<XRRCrtcGamma, XRRFreeGamma>;

std::vector<std::uint16_t> toRamp(const std::vector<float>& values) {
    std::vector<std::uint16_t> ramp;
    ramp.reserve(values.size());
    for (float v : values) {
        const double clamped = std::isnan(v) ? 0.0 : std::clamp(static_cast<double>(v), 0.0, 1.0);
        ramp.push_back(static_cast<std::uint16_t>(std::lround(clamped * kGammaMax)));
    }
    return ramp;
}

}  // namespace

std::unique_ptr<X11DisplayServer> X11DisplayServer::open(const std::string& displayName,
                                                         TraceSink trace) {
    auto connection = XConnection::open(displayName);
    if (!connection) return nullptr;
    Display* display = connection->display();
    int eventBase = 0, errorBase = 0, major = 0, minor = 0;
    if (!XRRQueryExtension(display, &eventBase, &errorBase) ||
        !XRRQueryVersion(display, &major, &minor) || (major == 1 && minor < kNeededMinor) ||
        major < 1) {
        return nullptr;
    }
    return std::unique_ptr<X11DisplayServer>(
        new X11DisplayServer(std::move(connection), major, minor, std::move(trace)));
}

X11DisplayServer::X11DisplayServer(std::unique_ptr<XConnection> connection, int major, int minor,
                                   TraceSink trace)
    : connection_(std::move(connection)), major_(major), minor_(minor), trace_(std::move(trace)) {
    Display* display = connection_->display();
    {
        ErrorTrap trap(*connection_);
        int dpmsEvent = 0, dpmsError = 0;
        hasDpms_ = DPMSQueryExtension(display, &dpmsEvent, &dpmsError) && DPMSCapable(display);
        XRRSelectInput(display, connection_->root(),
                       RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask |
                           RROutputChangeNotifyMask | RROutputPropertyNotifyMask);
    }
    if (auto randr = readRandrWorld(*connection_))
        world_ = describeDisplays(std::move(*randr), memory_.mirrors);
}

X11DisplayServer::~X11DisplayServer() = default;

int X11DisplayServer::connectionFd() const {
    return connection_->fd();
}

std::string X11DisplayServer::randrVersion() const {
    return "RandR " + std::to_string(major_) + "." + std::to_string(minor_);
}

void X11DisplayServer::dispatchPending() {
    refresh(false);
}

const DisplayWorld& X11DisplayServer::world() const {
    refresh(false);
    return world_;
}

void X11DisplayServer::refresh(bool force) const {
    Display* display = connection_->display();
    std::optional<DisplayWorld> before;  // taken only once something changed
    auto replace = [&](DisplayWorld next) {
        if (before)
            world_ = std::move(next);
        else
            before = std::exchange(world_, std::move(next));
    };
    bool changed = force;
    for (int round = 0; round < kMaxRereads; ++round) {
        while (!connection_->lost() && XEventsQueued(display, QueuedAfterReading) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            // Keeps Xlib's idea of the screen size current.
            XRRUpdateConfiguration(&event);
            changed = true;
        }
        if (connection_->lost()) {
            if (auto handler = std::exchange(lostHandler_, nullptr)) handler();
            // The server went away, and every display with it.
            if (!world_.displays.empty()) {
                trace("x11: connection to the display server lost");
                replace(DisplayWorld{});
            }
            break;
        }
        if (!changed) break;
        changed = false;
        if (auto randr = readRandrWorld(*connection_))
            replace(describeDisplays(std::move(*randr), memory_.mirrors));
    }
    // One outcome for everything taken in, however many reads it took.
    if (before) deliver(*before, world_);
}

void X11DisplayServer::deliver(const DisplayWorld& before, const DisplayWorld& after) const {
    const auto changes = diffDisplays(before, after);
    if (changes.empty()) return;
    // A handler may add or remove registrations while it runs.
    const auto handlers = handlers_;
    for (const auto& [id, change] : changes) {
        for (const auto& [registration, handler] : handlers)
            handler(id, change);
    }
}

const DisplayFacts* X11DisplayServer::online(DisplayID id) const {
    return world().findOnline(id);
}

void X11DisplayServer::trace(const std::string& line) const {
    if (trace_) trace_(line);
}

std::vector<DisplayID> X11DisplayServer::onlineIDs() const {
    std::vector<DisplayID> ids;
    for (const DisplayFacts& d : world().displays) {
        if (d.online() && ids.size() < kMaxDisplays) ids.push_back(d.id);
    }
    return ids;
}

DisplayID X11DisplayServer::mainDisplay() const {
    return world().main;
}

bool X11DisplayServer::isBuiltin(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d && d->builtin;
}

bool X11DisplayServer::isAsleep(DisplayID id) const {
    if (!online(id) || !hasDpms_ || connection_->lost()) return false;
    CARD16 level = DPMSModeOn;
    BOOL enabled = False;
    ErrorTrap trap(*connection_);
    return DPMSInfo(connection_->display(), &level, &enabled) && enabled && level != DPMSModeOn;
}

std::uint32_t X11DisplayServer::vendor(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d && d->edid ? d->edid->vendor : 0;
}

std::uint32_t X11DisplayServer::model(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d && d->edid ? d->edid->product : 0;
}

std::uint32_t X11DisplayServer::serial(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d && d->edid ? d->edid->serial : 0;
}

std::string X11DisplayServer::persistentKey(DisplayID id) const {
    const DisplayFacts* d = world().find(id);
    if (d && !d->edid) return d->connector;
    return DisplayServer::persistentKey(id);
}

double X11DisplayServer::rotation(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? rotationDegrees(d->rotation) : 0;
}

Rect X11DisplayServer::bounds(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? d->bounds : Rect{};
}

Size X11DisplayServer::physicalSize(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? d->physicalSize : Size{};
}

std::optional<PlatformMode> X11DisplayServer::currentMode(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? d->mode : std::nullopt;
}

std::vector<PlatformMode> X11DisplayServer::allModes(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? d->modes : std::vector<PlatformMode>{};
}

DisplayID X11DisplayServer::mirrorSource(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? d->mirrorOf : 0;
}

std::unique_ptr<DisplayConfiguration> X11DisplayServer::beginConfiguration() {
    if (connection_->lost()) return nullptr;
    return std::make_unique<X11Configuration>(*this, alive_);
}

ConfigStatus X11DisplayServer::apply(const std::vector<ConfigChange>& changes) {
    if (connection_->lost()) return kConfigUnavailable;
    const ConfigStatus status = applyGrabbed(changes);
    // The handlers hear of the outcome like of any other change.
    refresh(true);
    return status;
}

ConfigStatus X11DisplayServer::applyGrabbed(const std::vector<ConfigChange>& changes) {
    Display* display = connection_->display();
    ErrorTrap trap(*connection_);
    // No other client sees, or changes, the screen half-way.
    XGrabServer(display);
    struct Ungrab {
        Display* display;
        ~Ungrab() { XUngrabServer(display); }
    } ungrab{display};

    auto randr = readRandrWorld(*connection_);
    if (!randr) return kConfigUnavailable;
    LayoutMemory memory = memory_;
    const DisplayWorld now = describeDisplays(std::move(*randr), memory.mirrors);
    auto plan = planLayout(now, changes, memory);
    auto crtcs = plan ? assignCrtcs(now.randr, plan->layout) : std::nullopt;
    if (!crtcs) return kConfigIllegalArgument;
    const ConfigStatus status = applyScreen(
        *connection_, now.randr, ScreenSetting{*crtcs, plan->width, plan->height, plan->primary});
    if (status == kConfigOK) {
        memory_ = std::move(memory);
        return status;
    }
    trace("x11: configuration refused (" + std::to_string(status) + "), restoring");
    if (auto after = readRandrWorld(*connection_)) {
        (void)applyScreen(*connection_, *after,
                          ScreenSetting{currentCrtcs(now.randr), now.randr.screenWidth,
                                        now.randr.screenHeight, now.randr.primary});
    }
    return status;
}

std::size_t X11DisplayServer::gammaRampSize(DisplayID id) const {
    const DisplayFacts* d = online(id);
    return d ? d->gammaSize : 0;
}

ConfigStatus X11DisplayServer::setGamma(DisplayID id, const GammaRamps& ramps) {
    const DisplayFacts* d = online(id);
    if (!d) return kConfigIllegalArgument;
    const std::size_t size = d->gammaSize;
    if (size == 0) return kConfigUnavailable;
    if (ramps.red.size() != size || ramps.green.size() != size || ramps.blue.size() != size)
        return kConfigIllegalArgument;
    Display* display = connection_->display();
    const XId crtc = d->crtc;
    ErrorTrap trap(*connection_);
    if (!savedGamma_.contains(id)) {
        Gamma before(XRRGetCrtcGamma(display, crtc));
        if (!before || before->size != static_cast<int>(size)) return kConfigUnavailable;
        savedGamma_[id] = SavedGamma{{before->red, before->red + size},
                                     {before->green, before->green + size},
                                     {before->blue, before->blue + size}};
    }
    Gamma gamma(XRRAllocGamma(static_cast<int>(size)));
    if (!gamma) return kConfigUnavailable;
    const auto red = toRamp(ramps.red), green = toRamp(ramps.green), blue = toRamp(ramps.blue);
    std::copy(red.begin(), red.end(), gamma->red);
    std::copy(green.begin(), green.end(), gamma->green);
    std::copy(blue.begin(), blue.end(), gamma->blue);
    XRRSetCrtcGamma(display, crtc, gamma.get());
    const int error = trap.sync();
    return error == 0 ? kConfigOK : kXErrorStatusBase + error;
}

void X11DisplayServer::resetGamma(DisplayID id) {
    auto saved = savedGamma_.find(id);
    if (saved == savedGamma_.end()) return;  // never changed: it shows its own ramps
    const DisplayFacts* d = online(id);
    if (!d || d->gammaSize != saved->second.red.size()) return;
    Gamma gamma(XRRAllocGamma(static_cast<int>(d->gammaSize)));
    if (!gamma) return;
    std::copy(saved->second.red.begin(), saved->second.red.end(), gamma->red);
    std::copy(saved->second.green.begin(), saved->second.green.end(), gamma->green);
    std::copy(saved->second.blue.begin(), saved->second.blue.end(), gamma->blue);
    ErrorTrap trap(*connection_);
    XRRSetCrtcGamma(connection_->display(), d->crtc, gamma.get());
    if (trap.sync() == 0) savedGamma_.erase(saved);
}

std::vector<Screen> X11DisplayServer::screens() const {
    std::vector<Screen> screens;
    for (const DisplayFacts& d : world().displays) {
        // A mirroring display shows its source's screen, not one of its own.
        if (d.online() && d.mirrorOf == 0) screens.push_back(Screen{d.id, d.name(), d.bounds});
    }
    return screens;
}

std::optional<Point> X11DisplayServer::pointerLocation() const {
    if (connection_->lost()) return std::nullopt;
    Window root = None, child = None;
    int rootX = 0, rootY = 0, windowX = 0, windowY = 0;
    unsigned int mask = 0;
    ErrorTrap trap(*connection_);
    // False: the pointer is on another screen of the server.
    if (!XQueryPointer(connection_->display(), connection_->root(), &root, &child, &rootX, &rootY,
                       &windowX, &windowY, &mask)) {
        return std::nullopt;
    }
    return Point{static_cast<double>(rootX), static_cast<double>(rootY)};
}

int X11DisplayServer::addReconfigurationHandler(ReconfigurationHandler handler) {
    const int registration = nextRegistration_++;
    handlers_[registration] = std::move(handler);
    return registration;
}

void X11DisplayServer::removeReconfigurationHandler(int registration) {
    handlers_.erase(registration);
}

}  // namespace lumora::lx
