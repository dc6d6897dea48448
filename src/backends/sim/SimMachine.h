#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/AVServices.h"
#include "platform/Backlight.h"
#include "platform/DisplayServer.h"
#include "platform/LidSensor.h"
#include "platform/Platform.h"
#include "platform/Power.h"
#include "platform/Scheduler.h"
#include "platform/SystemEvents.h"
#include "platform/VirtualDisplays.h"
#include "sim/SimInput.h"
#include "sim/SimOsd.h"
#include "sim/World.h"

namespace lumora::sim {

// One byte-level transfer on a simulated monitor's I2C channel, as the monitor saw it.
struct WireEvent {
    enum class Kind { write, read };
    double time = 0;  // scheduler uptime of the transfer
    DisplayID display = 0;
    Kind kind = Kind::write;
    std::uint8_t chip = 0;
    std::uint8_t dataAddress = 0;
    std::vector<std::uint8_t> bytes;  // written bytes, or the bytes handed back by a read
    std::int32_t status = 0;
};

// A complete simulated machine behind the platform ports. All state sits behind one lock, so
// the DDC queue's thread and the main thread may use it at once.
//
// How it behaves where real display servers leave room:
// - The online list holds the displays that are plugged in and enabled. The main display is
//   the online display at (0,0) (one that mirrors another only when no other is there), else
//   the first online one. A display that mirrors another has no screen of its own.
// - A configuration refuses an unknown display or mode when the change is queued
//   (status 1001); complete() then applies everything queued at once and returns 0.
// - Every change of the arrangement announces each affected display once: added when it came
//   online, removed when it left, changed for a new mode, origin or mirroring. Handlers run on
//   the changing thread, after the lock is released.
// - The main display is the one at (0,0): making a display main moves every origin.
// - Channels, virtual display handles and child processes may outlive the machine; they then
//   fail quietly. Handlers are called only while the machine exists.
class SimMachine : public Platform {
  public:
    SimMachine(World world, Scheduler& scheduler);
    ~SimMachine() override;
    SimMachine(const SimMachine&) = delete;
    SimMachine& operator=(const SimMachine&) = delete;

    [[nodiscard]] std::string name() const override;
    // Everything, but for what the world switches off (disconnect, virtual displays, backlight
    // entry points, the lid sensor).
    [[nodiscard]] Capabilities capabilities() const override;
    DisplayServer& displayServer() override;
    Backlight& backlight() override;
    AVServices& avServices() override;
    VirtualDisplays& virtualDisplays() override;
    Power& power() override;
    LidSensor& lidSensor() override;
    SystemEvents& systemEvents() override;
    // The world's "lightSensor" (none: capability absent) and "clock" (absent: real time,
    // else running on from the given time with the scheduler's uptime).
    AmbientLight& ambientLight() override;
    WallClock& wallClock() override;
    // The keyboard (trusted for the brightness-key tap as the world's "accessibility" says)
    // and the on-screen display.
    SimInput& input() override;
    SimOsd& osd();

    // The hardware state as the state file shows it.
    [[nodiscard]] nlohmann::json state() const;
    // When set, the state file is rewritten after every hardware change (pretty, keys sorted).
    void setStateFile(std::filesystem::path file);
    void writeStateFile() const;

    // Scripted hardware changes, delivered through the same reconfiguration events that real
    // hardware gives.
    void setOnline(DisplayID id, bool online);  // plug in / unplug
    void setAsleep(DisplayID id, bool asleep);
    void setPointer(Point location);
    // Moves the world to `next`: plugs, unplugs, pointer, lid angle, and one wake for every
    // step the wake counter went up. A display new to the machine is plugged in; a physical
    // display missing from `next` is unplugged.
    void applyWorld(const World& next);
    // Moves the lid. An opened sensor reports the new angle on the main queue; with
    // `reported` false it does not (real sensors miss changes), and only a read sees it.
    void setLidAngle(std::int64_t angle, bool reported = true);
    // The system wakes from sleep: the displays wake (DDC monitors that forget go back to
    // their world values and may ignore DDC/CI for a while; gamma tables go back to identity
    // when the world says so), then the did-wake and screens-did-wake notifications go out
    // on the main queue.
    void simulateWake();
    // The room's light (nothing: the sensor is gone) and the time of day from now on.
    void setLightLux(std::optional<double> lux);
    void setClock(double utcSeconds);
    // Another program holds a monitor's DDC bus for its next `exchanges` exchanges.
    void holdDdcBus(DisplayID display, int exchanges);

    // What went over the DDC/CI wires, oldest first.
    [[nodiscard]] std::vector<WireEvent> wire() const;
    void clearWire();

    // The gamma table a display now shows; nothing while it shows its profile.
    [[nodiscard]] std::optional<GammaRamps> gamma(DisplayID id) const;

    struct Impl;

  private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace lumora::sim
