#include "MacDisplayServer.h"

#include <cmath>
#include <iterator>

#include "AppKitScreens.h"
#include "DisplayModes.h"
#include "MacDisplayConfiguration.h"
#include "decode/Reconfiguration.h"

namespace lumora::mac {

namespace {

// The most displays Lumora handles; the online list is read into a buffer of this size.
constexpr std::uint32_t kMaxDisplays = 32;

}  // namespace

MacDisplayServer::MacDisplayServer(const DisplayEnableSwitch& enableSwitch)
    : enableSwitch_(enableSwitch) {
    callbackRegistered_ = CGDisplayRegisterReconfigurationCallback(
                              &MacDisplayServer::onReconfiguration, this) == kCGErrorSuccess;
}

MacDisplayServer::~MacDisplayServer() {
    if (callbackRegistered_)
        CGDisplayRemoveReconfigurationCallback(&MacDisplayServer::onReconfiguration, this);
}

std::vector<DisplayID> MacDisplayServer::onlineIDs() const {
    CGDirectDisplayID ids[kMaxDisplays] = {};
    std::uint32_t count = 0;
    if (CGGetOnlineDisplayList(kMaxDisplays, ids, &count) != kCGErrorSuccess) return {};
    if (count > kMaxDisplays) count = kMaxDisplays;
    return std::vector<DisplayID>(std::begin(ids), std::begin(ids) + count);
}

DisplayID MacDisplayServer::mainDisplay() const {
    return CGMainDisplayID();
}

bool MacDisplayServer::isBuiltin(DisplayID id) const {
    return CGDisplayIsBuiltin(id) != 0;
}

bool MacDisplayServer::isAsleep(DisplayID id) const {
    return CGDisplayIsAsleep(id) != 0;
}

std::uint32_t MacDisplayServer::vendor(DisplayID id) const {
    return CGDisplayVendorNumber(id);
}

std::uint32_t MacDisplayServer::model(DisplayID id) const {
    return CGDisplayModelNumber(id);
}

std::uint32_t MacDisplayServer::serial(DisplayID id) const {
    return CGDisplaySerialNumber(id);
}

double MacDisplayServer::rotation(DisplayID id) const {
    const double degrees = CGDisplayRotation(id);
    return std::isfinite(degrees) ? degrees : 0;
}

Rect MacDisplayServer::bounds(DisplayID id) const {
    const CGRect r = CGDisplayBounds(id);
    return {{r.origin.x, r.origin.y}, {r.size.width, r.size.height}};
}

Size MacDisplayServer::physicalSize(DisplayID id) const {
    const CGSize size = CGDisplayScreenSize(id);
    return {size.width, size.height};
}

std::optional<PlatformMode> MacDisplayServer::currentMode(DisplayID id) const {
    CGDisplayModeRef mode = CGDisplayCopyDisplayMode(id);
    if (!mode) return std::nullopt;
    const PlatformMode decoded = decodeMode(rawFields(mode));
    CGDisplayModeRelease(mode);
    return decoded;
}

std::vector<PlatformMode> MacDisplayServer::allModes(DisplayID id) const {
    const CFRef<CFArrayRef> modes = copyAllModes(id);
    std::vector<PlatformMode> out;
    for (CFIndex i = 0; i < modeCount(modes); ++i)
        out.push_back(decodeMode(rawFields(modeAt(modes, i))));
    return out;
}

DisplayID MacDisplayServer::mirrorSource(DisplayID id) const {
    return CGDisplayMirrorsDisplay(id);
}

std::unique_ptr<DisplayConfiguration> MacDisplayServer::beginConfiguration() {
    CGDisplayConfigRef config = nullptr;
    if (CGBeginDisplayConfiguration(&config) != kCGErrorSuccess || !config) return nullptr;
    return std::make_unique<MacDisplayConfiguration>(config, *this, enableSwitch_);
}

std::size_t MacDisplayServer::gammaRampSize(DisplayID id) const {
    return CGDisplayGammaTableCapacity(id);
}

CGError MacDisplayServer::loadRamps(DisplayID id, const GammaRamps& ramps) {
    return CGSetDisplayTransferByTable(id, static_cast<std::uint32_t>(ramps.red.size()),
                                       ramps.red.data(), ramps.green.data(), ramps.blue.data());
}

ConfigStatus MacDisplayServer::setGamma(DisplayID id, const GammaRamps& ramps) {
    const std::size_t size = gammaRampSize(id);
    if (size == 0) return kConfigUnavailable;
    if (!GammaMemory::fits(ramps, size)) return kConfigIllegalArgument;
    const CGError status = loadRamps(id, ramps);
    if (status == kCGErrorSuccess) gamma_.remember(id, ramps);
    return static_cast<ConfigStatus>(status);
}

void MacDisplayServer::resetGamma(DisplayID id) {
    gamma_.forget(id);
    const std::vector<DisplayID> online = onlineIDs();
    gamma_.keepOnly(online);
    // The restore acts on every display at once; the others get their tables back.
    CGDisplayRestoreColorSyncSettings();
    for (const auto& [display, ramps] : gamma_.others(id)) {
        if (GammaMemory::fits(ramps, gammaRampSize(display))) {
            loadRamps(display, ramps);
        } else {
            gamma_.forget(display);  // its ramp size changed: the core loads a new table
        }
    }
}

std::vector<Screen> MacDisplayServer::screens() const {
    return appKitScreens();
}

std::optional<Point> MacDisplayServer::pointerLocation() const {
    return appKitPointer();
}

int MacDisplayServer::addReconfigurationHandler(ReconfigurationHandler handler) {
    std::lock_guard lock(handlersMutex_);
    const int registration = nextRegistration_++;
    handlers_.emplace(registration, std::move(handler));
    return registration;
}

void MacDisplayServer::removeReconfigurationHandler(int registration) {
    std::lock_guard lock(handlersMutex_);
    handlers_.erase(registration);
}

void MacDisplayServer::onReconfiguration(CGDirectDisplayID display,
                                         CGDisplayChangeSummaryFlags flags, void* userInfo) {
    const auto change = decodeReconfiguration(flags);
    if (!change) return;
    static_cast<MacDisplayServer*>(userInfo)->deliver(display, *change);
}

void MacDisplayServer::deliver(DisplayID id, DisplayChange change) {
    std::vector<ReconfigurationHandler> handlers;
    {
        // Called outside the lock: a handler may add or remove registrations.
        std::lock_guard lock(handlersMutex_);
        for (const auto& [registration, handler] : handlers_)
            handlers.push_back(handler);
    }
    for (const auto& handler : handlers)
        handler(id, change);
}

}  // namespace lumora::mac
