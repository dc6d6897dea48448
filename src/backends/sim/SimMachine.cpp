#include "sim/SimMachine.h"

#include <algorithm>

#include "sim/SimCore.h"
#include "sim/SimPorts.h"
#include "sim/WorldResolve.h"

namespace lumora::sim {

struct SimMachine::Impl {
    Impl(World world, Scheduler& scheduler)
        : core(std::make_shared<SimCore>(std::move(world), scheduler)),
          displayServer(makeSimDisplayServer(core)),
          backlight(makeSimBacklight(core)),
          avServices(makeSimAVServices(core)),
          virtualDisplays(makeSimVirtualDisplays(core)),
          power(makeSimPower(core)),
          lidSensor(makeSimLidSensor(core)),
          systemEvents(makeSimSystemEvents(core)),
          ambientLight(makeSimAmbientLight(core)),
          wallClock(makeSimWallClock(core)),
          input(core->read([](const SimData& data) { return data.accessibility; })) {}

    std::shared_ptr<SimCore> core;
    std::unique_ptr<DisplayServer> displayServer;
    std::unique_ptr<Backlight> backlight;
    std::unique_ptr<AVServices> avServices;
    std::unique_ptr<VirtualDisplays> virtualDisplays;
    std::unique_ptr<Power> power;
    std::unique_ptr<LidSensor> lidSensor;
    std::unique_ptr<SystemEvents> systemEvents;
    std::unique_ptr<AmbientLight> ambientLight;
    std::unique_ptr<WallClock> wallClock;
    SimInput input;
    SimOsd osd;
};

SimMachine::SimMachine(World world, Scheduler& scheduler)
    : impl_(std::make_unique<Impl>(std::move(world), scheduler)) {}

SimMachine::~SimMachine() = default;

std::string SimMachine::name() const {
    return "simulated machine";
}

Capabilities SimMachine::capabilities() const {
    return impl_->core->read([](const SimData& data) {
        Capabilities c;
        c.setMode = c.setMain = c.mirror = c.gamma = true;
        c.enableDisable = data.disconnect;
        c.virtualDisplays = data.virtualDisplaysAvailable;
        c.globalKeys = c.brightnessKeyTap = c.pointer = true;
        c.lidAngle = data.lid && data.lid->sensor;
        c.backlight = data.backlightControl;
        c.ddc = true;
        c.displaySleep = c.systemSleep = c.idleInhibit = true;
        c.ambientLight = data.lux.has_value();
        return c;
    });
}

DisplayServer& SimMachine::displayServer() {
    return *impl_->displayServer;
}
Backlight& SimMachine::backlight() {
    return *impl_->backlight;
}
AVServices& SimMachine::avServices() {
    return *impl_->avServices;
}
VirtualDisplays& SimMachine::virtualDisplays() {
    return *impl_->virtualDisplays;
}
Power& SimMachine::power() {
    return *impl_->power;
}
LidSensor& SimMachine::lidSensor() {
    return *impl_->lidSensor;
}
SystemEvents& SimMachine::systemEvents() {
    return *impl_->systemEvents;
}
AmbientLight& SimMachine::ambientLight() {
    return *impl_->ambientLight;
}
WallClock& SimMachine::wallClock() {
    return *impl_->wallClock;
}
SimInput& SimMachine::input() {
    return impl_->input;
}
SimOsd& SimMachine::osd() {
    return impl_->osd;
}

nlohmann::json SimMachine::state() const {
    return impl_->core->state();
}

void SimMachine::setStateFile(std::filesystem::path file) {
    impl_->core->setStateFile(std::move(file));
}

void SimMachine::writeStateFile() const {
    impl_->core->writeStateFile();
}

void SimMachine::setOnline(DisplayID id, bool online) {
    impl_->core->change([&](SimData& data) {
        if (SimDisplay* d = data.find(id)) d->plugged = online;
    });
}

void SimMachine::setAsleep(DisplayID id, bool asleep) {
    impl_->core->update([&](SimData& data) {
        if (SimDisplay* d = data.find(id)) d->asleep = asleep;
        return false;
    });
}

void SimMachine::setPointer(Point location) {
    impl_->core->update([&](SimData& data) {
        data.cursor = location;
        return false;
    });
}

void SimMachine::applyWorld(const World& nextWorld) {
    World next = nextWorld;
    resolveWorld(next);
    impl_->core->change([&](SimData& data) {
        // Plugs and unplugs. A display the machine has never seen is plugged in for the first
        // time; a physical display missing from the new world has been unplugged.
        for (const auto& wd : next.displays) {
            if (SimDisplay* d = data.find(wd.id)) {
                d->plugged = wd.online;
                // The system (or another program) moved the panel's backlight.
                if (d->builtin && wd.backlight != d->worldBacklight) d->backlight = wd.backlight;
                d->worldBacklight = wd.backlight;
            } else {
                data.displays.push_back(makeSimDisplay(wd));
            }
        }
        for (auto& d : data.displays) {
            const bool listed = std::any_of(next.displays.begin(), next.displays.end(),
                                            [&](const WorldDisplay& wd) { return wd.id == d.id; });
            const bool ownVirtual = std::any_of(data.virtuals.begin(), data.virtuals.end(),
                                                [&](const SimVirtual& v) { return v.id == d.id; });
            if (!listed && !ownVirtual) d.plugged = false;
        }
        data.cursor = next.cursor.value_or(data.cursor);
        data.lux = next.lightLux;
        // Only a new time moves the clock, so other edits leave it running.
        if (next.clock != data.worldClock) {
            data.worldClock = next.clock;
            data.clock = next.clock;
            data.clockSetAt = impl_->core->scheduler().uptime();
        }
    });
    if (next.lid) moveSimLid(impl_->core, *next.lid, /*report=*/true);
    // A lower counter (the file started over) wakes nothing.
    std::int64_t wakes = 0;
    impl_->core->update([&](SimData& data) {
        wakes = std::max<std::int64_t>(0, next.wakes - data.wakes);
        data.wakes = next.wakes;
        data.gammaResetOnWake = next.gammaResetOnWake;
        return false;
    });
    for (std::int64_t i = 0; i < wakes; ++i)
        simulateWake();
}

void SimMachine::setLidAngle(std::int64_t angle, bool reported) {
    auto lid = impl_->core->read([](const SimData& data) { return data.lid; });
    if (!lid) return;  // a machine without a lid sensor
    lid->angle = angle;
    moveSimLid(impl_->core, *lid, reported);
}

void SimMachine::simulateWake() {
    const double now = impl_->core->scheduler().uptime();
    impl_->core->update([now](SimData& data) {
        for (auto& d : data.displays) {
            d.asleep = false;
            if (d.ddc) d.ddc->wake(now);
            if (data.gammaResetOnWake) d.gamma.reset();
        }
        return true;
    });
    postSimSystemEvent(impl_->core, SystemEvent::didWake);
    postSimSystemEvent(impl_->core, SystemEvent::screensDidWake);
}

void SimMachine::setLightLux(std::optional<double> lux) {
    impl_->core->update([&](SimData& data) {
        data.lux = lux;
        return false;
    });
}

void SimMachine::setClock(double utcSeconds) {
    const double now = impl_->core->scheduler().uptime();
    impl_->core->update([&](SimData& data) {
        data.clock = utcSeconds;
        data.clockSetAt = now;
        return false;
    });
}

void SimMachine::holdDdcBus(DisplayID display, int exchanges) {
    impl_->core->update([&](SimData& data) {
        if (SimDisplay* d = data.find(display); d && d->ddc) d->ddc->holdBus(exchanges);
        return false;
    });
}

std::vector<WireEvent> SimMachine::wire() const {
    return impl_->core->read([](const SimData& data) { return data.wire; });
}

void SimMachine::clearWire() {
    impl_->core->update([](SimData& data) {
        data.wire.clear();
        return false;
    });
}

std::optional<GammaRamps> SimMachine::gamma(DisplayID id) const {
    return impl_->core->read([&](const SimData& data) {
        const SimDisplay* d = data.find(id);
        return d ? d->gamma : std::optional<GammaRamps>{};
    });
}

}  // namespace lumora::sim
