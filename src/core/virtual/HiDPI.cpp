#include "virtual/HiDPI.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "virtual/VirtualScreenPlan.h"

namespace lumora {

namespace {

// Used when the display reports no current mode.
constexpr double kDefaultRefresh = 60;
// The virtual display never runs slower than this, whatever the monitor reports.
constexpr double kMinRefresh = 30;
// A reported physical width below this is no real measurement.
constexpr double kMinKnownWidthMM = 10;
// Without a measurement, assume a 110 pixels-per-inch panel.
constexpr double kMillimetresPerInch = 25.4;
constexpr double kAssumedPixelsPerInch = 110;
// Mixed into the monitor's serial so the backing display never claims the monitor's identity.
constexpr std::uint32_t kSerialMarker = 0x4C4D;
// The backing store holds every point as 2x2 pixels.
constexpr std::int64_t kBackingScale = 2;

std::string prefix(DisplayID id) {
    return "hidpi: display " + std::to_string(id);
}

// Distance in floating point: widths from a broken server may be anywhere in 64 bits.
double widthDistance(const DisplayMode& mode, std::int64_t width) {
    return std::abs(static_cast<double>(mode.width) - static_cast<double>(width));
}

}  // namespace

HiDPI::HiDPI(Displays& displays, VirtualDisplays& virtualDisplays, Scheduler& scheduler,
             Defaults& defaults, Log& log)
    : displays_(displays),
      virtualDisplays_(virtualDisplays),
      scheduler_(scheduler),
      defaults_(defaults),
      log_(log) {
    // Anything but an array of strings counts as no choice at all.
    const auto stored = defaults_.stringArray(kEnabledKey);
    if (stored) enabledKeys_.insert(stored->begin(), stored->end());
}

bool HiDPI::enable(DisplayID id) {
    DisplayServer& server = displays_.server();
    const std::string k = key(server, id);
    if (sessions_.contains(k)) return true;

    if (server.isBuiltin(id)) return false;
    const auto native = nativeSize(server, id);
    if (!native) return false;
    const auto modes = pointModes(*native);
    if (modes.empty()) {
        log_.write(prefix(id) + " " + std::to_string(native->first) + "\u00D7" +
                   std::to_string(native->second) + ": no usable HiDPI size");
        return false;
    }

    const auto current = displays_.currentMode(id);
    auto screen = createScreen(id, *native, modes, current);
    if (!screen) {
        log_.write("hidpi: virtual screen for display " + std::to_string(id) + " failed");
        return false;
    }

    const std::int64_t formerWidth = current ? current->width : native->first;
    const DisplayID vid = screen->displayID();
    displays_.addVirtualID(vid);
    const std::uint64_t number = ++sessionsStarted_;
    sessions_[k] = Session{id, vid, std::move(screen), number};

    std::weak_ptr<bool> alive = alive_;
    auto step = [this, alive, k, number, size = *native, formerWidth] {
        if (alive.expired()) return;
        mirror(k, number, size, formerWidth);
    };
    scheduler_.mainQueue().postAfter(kMirrorDelay, std::move(step));

    enabledKeys_.insert(k);
    saveEnabled();
    return true;
}

std::unique_ptr<LMVirtualScreen> HiDPI::createScreen(DisplayID id, PixelSize native,
                                                     const std::vector<PixelSize>& modes,
                                                     const std::optional<DisplayMode>& current) {
    DisplayServer& server = displays_.server();

    VirtualDisplayDescriptor d;
    d.name = displays_.name(id) + " HiDPI";
    // pointModes keeps every side within 3840, so all of this fits 32 bits; the check only
    // guards that bound.
    constexpr std::int64_t kMax32 = std::numeric_limits<std::uint32_t>::max();
    const auto [firstWidth, firstHeight] = modes.front();
    if (kBackingScale * firstWidth > kMax32 || kBackingScale * firstHeight > kMax32) {
        return nullptr;
    }
    for (const auto& [w, h] : modes)
        d.modes.emplace_back(static_cast<std::uint32_t>(w), static_cast<std::uint32_t>(h));
    d.maxPixelsWide = static_cast<std::uint32_t>(kBackingScale * firstWidth);
    d.maxPixelsHigh = static_cast<std::uint32_t>(kBackingScale * firstHeight);

    d.sizeMillimeters = server.physicalSize(id);
    if (!(d.sizeMillimeters.width >= kMinKnownWidthMM)) {
        constexpr double kPerPixel = kMillimetresPerInch / kAssumedPixelsPerInch;
        d.sizeMillimeters = Size{static_cast<double>(native.first) * kPerPixel,
                                 static_cast<double>(native.second) * kPerPixel};
    }
    d.refresh = std::max(current ? current->refresh : kDefaultRefresh, kMinRefresh);
    d.hiDPI = true;
    d.product = kHiDPIProduct;
    d.serial = server.serial(id) ^ kSerialMarker;
    return LMVirtualScreen::create(virtualDisplays_, d);
}

void HiDPI::mirror(const std::string& sessionKey, std::uint64_t number, PixelSize native,
                   std::int64_t formerWidth) {
    // A session that ended in the meantime has nothing left to mirror.
    auto session = sessions_.find(sessionKey);
    if (session == sessions_.end() || session->second.number != number) return;
    const DisplayID id = session->second.external;
    const DisplayID vid = session->second.virtualID;

    // The monitor runs its native size at 1x; the virtual display does the scaling.
    const auto monitorModes = displays_.modes(id);
    const auto native1x =
        std::find_if(monitorModes.begin(), monitorModes.end(), [&](const DisplayMode& m) {
            return m.pixelWidth <= m.width && m.pixelWidth == native.first &&
                   m.pixelHeight == native.second;
        });
    if (native1x != monitorModes.end()) displays_.setMode(id, *native1x);

    displays_.mirror(id, vid);

    // The point size nearest to what the user had, so the desktop keeps its scale.
    std::vector<DisplayMode> hiDPIModes;
    for (const auto& mode : displays_.modes(vid)) {
        if (mode.hiDPI()) hiDPIModes.push_back(mode);
    }
    const auto closest = std::min_element(
        hiDPIModes.begin(), hiDPIModes.end(), [formerWidth](const auto& a, const auto& b) {
            return widthDistance(a, formerWidth) < widthDistance(b, formerWidth);
        });
    if (closest != hiDPIModes.end()) displays_.setMode(vid, *closest);

    log_.write(prefix(id) + " now mirrors HiDPI virtual " + std::to_string(vid) + " (" +
               std::to_string(hiDPIModes.size()) + " sizes)");
}

void HiDPI::disable(DisplayID id, bool remember) {
    const std::string k = key(displays_.server(), id);
    if (auto found = sessions_.find(k); found != sessions_.end()) {
        // Taken out of the map first; the virtual display goes when `ended` does.
        const Session ended = std::move(found->second);
        sessions_.erase(found);
        displays_.mirror(ended.external, 0);
        displays_.removeVirtualID(ended.virtualID);
        log_.write(prefix(id) + " back to 1\u00D7");
    }
    if (remember) {
        enabledKeys_.erase(k);
        saveEnabled();
    }
}

void HiDPI::reconcile() {
    const auto online = displays_.onlineIDs();
    auto isOnline = [&online](DisplayID id) {
        return std::find(online.begin(), online.end(), id) != online.end();
    };
    for (auto it = sessions_.begin(); it != sessions_.end();) {
        if (isOnline(it->second.external)) {
            ++it;
            continue;
        }
        log_.write(prefix(it->second.external) + " gone, its virtual screen released");
        it = sessions_.erase(it);
    }

    DisplayServer& server = displays_.server();
    for (DisplayID id : online) {
        if (server.isBuiltin(id)) continue;
        const std::string k = key(server, id);
        if (enabledKeys_.contains(k) && !sessions_.contains(k)) enable(id);
    }
}

void HiDPI::stopAll() {
    for (const auto& [k, session] : sessions_)
        displays_.mirror(session.external, 0);
    sessions_.clear();
}

bool HiDPI::isOn(DisplayID id) const {
    return sessions_.contains(key(displays_.server(), id));
}

std::optional<DisplayID> HiDPI::virtualFor(DisplayID id) const {
    auto found = sessions_.find(key(displays_.server(), id));
    if (found == sessions_.end()) return std::nullopt;
    return found->second.virtualID;
}

std::map<DisplayID, DisplayID> HiDPI::virtualByExternal() const {
    std::map<DisplayID, DisplayID> pairs;
    for (const auto& [k, session] : sessions_)
        pairs.emplace(session.external, session.virtualID);
    return pairs;
}

void HiDPI::saveEnabled() {
    defaults_.setStringArray(kEnabledKey,
                             std::vector<std::string>(enabledKeys_.begin(), enabledKeys_.end()));
}

}  // namespace lumora
