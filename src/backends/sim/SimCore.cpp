#include "sim/SimCore.h"

#include <algorithm>
#include <fstream>

#include "sim/WorldResolve.h"

namespace lumora::sim {

const PlatformMode* SimDisplay::currentMode() const {
    auto it = std::find_if(modes.begin(), modes.end(),
                           [&](const PlatformMode& m) { return m.id == mode; });
    return it == modes.end() ? nullptr : &*it;
}

Rect SimDisplay::bounds() const {
    const PlatformMode* current = currentMode();
    if (!current) return Rect{origin, {}};
    Size size{static_cast<double>(current->width), static_cast<double>(current->height)};
    if (rotation == 90 || rotation == 270) std::swap(size.width, size.height);
    return Rect{origin, size};
}

SimDisplay makeSimDisplay(const WorldDisplay& world) {
    SimDisplay d;
    d.id = world.id;
    d.name = world.name;
    d.builtin = world.builtin;
    d.vendor = world.vendor;
    d.model = world.model;
    d.serial = world.serial;
    d.plugged = world.online;
    d.asleep = world.asleep;
    d.origin = world.origin.value_or(Point{});
    d.rotation = world.rotation;
    d.sizeMM = world.sizeMM;
    for (const auto& m : world.modes) {
        d.modes.push_back(PlatformMode{m.id, m.width, m.height, m.pixelWidth, m.pixelHeight,
                                       m.refresh, m.usable});
    }
    d.mode = world.mode.value_or(d.modes.empty() ? 0 : d.modes.front().id);
    d.backlight = world.backlight;
    d.worldBacklight = world.backlight;
    if (world.ddc) {
        d.ddc =
            std::make_unique<SimDdcMonitor>(*world.ddc, world.vendor, world.model, world.serial);
    }
    return d;
}

namespace {

template <class Displays>
auto* findIn(Displays& displays, DisplayID id) {
    auto it = std::find_if(displays.begin(), displays.end(),
                           [&](const SimDisplay& d) { return d.id == id; });
    return it == displays.end() ? nullptr : &*it;
}

}  // namespace

SimDisplay* SimData::find(DisplayID id) {
    return findIn(displays, id);
}

const SimDisplay* SimData::find(DisplayID id) const {
    return findIn(displays, id);
}

const SimDisplay* SimData::findOnline(DisplayID id) const {
    const SimDisplay* d = find(id);
    return d && d->online() ? d : nullptr;
}

std::vector<DisplayID> SimData::onlineIDs() const {
    // The display server's list holds no more than this many displays.
    constexpr std::size_t kMaxOnline = 32;
    std::vector<DisplayID> ids;
    for (const auto& d : displays) {
        if (d.online() && ids.size() < kMaxOnline) ids.push_back(d.id);
    }
    return ids;
}

DisplayID SimData::mainDisplay() const {
    // A display that mirrors another sits at its source's origin but is never the main one.
    const SimDisplay* first = nullptr;
    const SimDisplay* atOrigin = nullptr;
    for (const auto& d : displays) {
        if (!d.online()) continue;
        if (!first) first = &d;
        if (d.origin == Point{} && (!atOrigin || (atOrigin->mirrorOf != 0 && d.mirrorOf == 0))) {
            atOrigin = &d;
        }
    }
    if (atOrigin) return atOrigin->id;
    return first ? first->id : 0;
}

double SimData::rightEdge(DisplayID except) const {
    double edge = 0;
    bool any = false;
    for (const auto& d : displays) {
        if (!d.online() || d.id == except) continue;
        const Rect b = d.bounds();
        edge = any ? std::max(edge, b.origin.x + b.size.width) : b.origin.x + b.size.width;
        any = true;
    }
    return edge;
}

SimCore::SimCore(World world, Scheduler& scheduler) : scheduler_(scheduler) {
    resolveWorld(world);
    for (const auto& d : world.displays)
        data_.displays.push_back(makeSimDisplay(d));
    data_.cursor = world.cursor.value_or(Point{});
    data_.virtualDisplaysAvailable = world.virtualDisplays;
    data_.disconnect = world.disconnect;
    data_.backlightControl = world.backlightControl;
    data_.accessibility = world.accessibility;
    data_.wakes = world.wakes;
    data_.gammaResetOnWake = world.gammaResetOnWake;
    data_.lid = world.lid;
    data_.lux = world.lightLux;
    data_.clock = data_.worldClock = world.clock;
    data_.clockSetAt = scheduler.uptime();
}

int SimCore::addHandler(ReconfigurationHandler handler) {
    std::lock_guard lock(mutex_);
    const int registration = nextHandler_++;
    handlers_.emplace(registration, std::move(handler));
    return registration;
}

void SimCore::removeHandler(int registration) {
    std::lock_guard lock(mutex_);
    handlers_.erase(registration);
}

SimCore::Looks SimCore::look() const {
    Looks looks;
    for (const auto& d : data_.displays) {
        looks.emplace_back(d.id, Look{d.online(), d.mode, d.origin, d.mirrorOf});
    }
    return looks;
}

void SimCore::settle(const Looks& before, std::unique_lock<std::mutex>& lock) {
    const Looks after = look();
    auto find = [](const Looks& looks, DisplayID id) -> const Look* {
        auto it =
            std::find_if(looks.begin(), looks.end(), [&](const auto& l) { return l.first == id; });
        return it == looks.end() ? nullptr : &it->second;
    };

    std::vector<std::pair<DisplayID, DisplayChange>> changes;
    for (const auto& [id, now] : after) {
        const Look* was = find(before, id);
        const bool wasOnline = was && was->online;
        if (now.online != wasOnline) {
            changes.emplace_back(id, now.online ? DisplayChange::added : DisplayChange::removed);
        } else if (now.online && (now.mode != was->mode || now.origin != was->origin ||
                                  now.mirrorOf != was->mirrorOf)) {
            changes.emplace_back(id, DisplayChange::changed);
        }
    }
    for (const auto& [id, was] : before) {
        if (was.online && !find(after, id)) changes.emplace_back(id, DisplayChange::removed);
    }

    writeStateLocked();
    std::vector<ReconfigurationHandler> handlers;
    for (const auto& [registration, handler] : handlers_)
        handlers.push_back(handler);
    lock.unlock();

    for (const auto& [id, change] : changes) {
        for (const auto& handler : handlers)
            handler(id, change);
    }
}

void SimCore::setStateFile(std::filesystem::path file) {
    std::lock_guard lock(mutex_);
    stateFile_ = std::move(file);
    writeStateLocked();
}

void SimCore::writeStateFile() const {
    std::lock_guard lock(mutex_);
    writeStateLocked();
}

nlohmann::json SimCore::state() const {
    std::lock_guard lock(mutex_);
    return stateJson(data_);
}

void SimCore::writeStateLocked() const {
    if (!stateFile_) return;
    // Written aside and renamed, so a reader never sees half a file.
    const std::string text =
        stateJson(data_).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    std::filesystem::path temporary = *stateFile_;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out) return;
        out << text;
        if (!out) return;
    }
    std::error_code ignored;
    std::filesystem::rename(temporary, *stateFile_, ignored);
}

}  // namespace lumora::sim
