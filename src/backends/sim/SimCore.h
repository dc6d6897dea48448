#pragma once

// Private to the sim backend: the state of the simulated machine and the one lock around it.

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/DisplayServer.h"
#include "platform/LidSensor.h"
#include "platform/Power.h"
#include "platform/Scheduler.h"
#include "platform/SystemEvents.h"
#include "sim/SimDdcMonitor.h"
#include "sim/SimMachine.h"
#include "sim/World.h"

namespace lumora::sim {

// A display or mode the server does not know.
inline constexpr ConfigStatus kSimIllegalArgument = kConfigIllegalArgument;
// The simulated displays have gamma tables of this many entries, as Macs have.
inline constexpr std::size_t kSimGammaRampSize = 256;
// I/O Kit's "no such device": no panel, or a channel whose display went away.
inline constexpr std::int32_t kSimNoDevice = static_cast<std::int32_t>(0xE00002C0);

struct SimDisplay {
    DisplayID id = 0;
    std::optional<std::string> name;
    bool builtin = false;
    std::uint32_t vendor = 0;
    std::uint32_t model = 0;
    std::uint32_t serial = 0;
    bool plugged = true;
    bool enabled = true;  // switched off in software when false
    bool asleep = false;
    Point origin;
    int rotation = 0;
    Size sizeMM;
    std::vector<PlatformMode> modes;
    std::int32_t mode = 0;
    DisplayID mirrorOf = 0;
    double backlight = 0.5;
    double worldBacklight = 0.5;      // as the world last set it: only a change there moves it
    std::optional<GammaRamps> gamma;  // nothing while the display shows its colour profile
    std::unique_ptr<SimDdcMonitor> ddc;

    // In the display server's online list.
    [[nodiscard]] bool online() const { return plugged && enabled; }
    [[nodiscard]] const PlatformMode* currentMode() const;
    [[nodiscard]] Rect bounds() const;
};

SimDisplay makeSimDisplay(const WorldDisplay& world);

struct SimVirtual {
    DisplayID id = 0;
    std::string name;
    std::uint32_t product = 0;
    std::uint32_t serial = 0;
    bool hiDPI = false;
};

struct SimPowerState {
    std::map<std::uint64_t, std::string> assertions;  // held idle-sleep inhibitions by number
    std::uint64_t nextAssertion = 1;
    double displaySleepEndsAt = -1;  // uptime at which the running display sleep is done
    int displaySleeps = 0;
    int systemSleeps = 0;
    int userActivity = 0;
};

// The lid-angle sensor's manager as the program opened it.
struct SimLidSensorState {
    bool open = false;                   // opened successfully
    std::optional<std::int64_t> cached;  // the last value the manager received
    LidSensor::ChangeHandler onChange;
};

struct SimObserver {
    SystemEvent event = SystemEvent::didWake;
    SystemEvents::Handler handler;
};

// Everything the machine knows. Only touched with SimCore's lock held.
struct SimData {
    std::vector<SimDisplay> displays;  // world order; virtual displays appended
    std::vector<SimVirtual> virtuals;
    Point cursor;
    bool virtualDisplaysAvailable = true;
    bool disconnect = true;
    bool backlightControl = true;
    bool accessibility = true;
    std::int64_t wakes = 0;  // the world's wake counter as last applied
    bool gammaResetOnWake = false;
    std::optional<WorldLid> lid;
    std::optional<double> lux;    // the light sensor's reading; nothing: no sensor
    std::optional<double> clock;  // the wall clock when clockSetAt was the uptime
    double clockSetAt = 0;
    std::optional<double> worldClock;  // the world file's clock as last applied
    SimLidSensorState lidSensor;
    std::map<SystemEvents::Token, SimObserver> observers;
    SystemEvents::Token nextObserver = 1;
    SimPowerState power;
    std::vector<WireEvent> wire;

    SimDisplay* find(DisplayID id);
    [[nodiscard]] const SimDisplay* find(DisplayID id) const;
    // The display when it is in the online list, else nothing.
    [[nodiscard]] const SimDisplay* findOnline(DisplayID id) const;
    [[nodiscard]] std::vector<DisplayID> onlineIDs() const;
    [[nodiscard]] DisplayID mainDisplay() const;
    // The x just right of the rightmost online display, ignoring `except`.
    [[nodiscard]] double rightEdge(DisplayID except = 0) const;
};

nlohmann::json stateJson(const SimData& data);

// The shared state behind every port. Objects that may outlive the machine (channels, virtual
// display handles, child processes) hold it weakly.
class SimCore {
  public:
    SimCore(World world, Scheduler& scheduler);

    [[nodiscard]] Scheduler& scheduler() const { return scheduler_; }

    // A query under the lock.
    template <class F>
    auto read(F&& query) const {
        std::lock_guard lock(mutex_);
        return query(static_cast<const SimData&>(data_));
    }

    // A change no display server would announce (DDC traffic, power, gamma). The function
    // returns whether the state file shows the change.
    template <class F>
    void update(F&& mutate) {
        std::lock_guard lock(mutex_);
        if (mutate(data_)) writeStateLocked();
    }

    // A change of the arrangement: applied under the lock, then the state file is rewritten,
    // then every registered handler hears about every display that changed (after the lock
    // is released, so handlers may call back in).
    template <class F>
    auto change(F&& mutate) {
        std::unique_lock lock(mutex_);
        auto before = look();
        if constexpr (std::is_void_v<std::invoke_result_t<F, SimData&>>) {
            mutate(data_);
            settle(before, lock);
        } else {
            auto result = mutate(data_);
            settle(before, lock);
            return result;
        }
    }

    int addHandler(ReconfigurationHandler handler);
    void removeHandler(int registration);

    void setStateFile(std::filesystem::path file);
    void writeStateFile() const;
    [[nodiscard]] nlohmann::json state() const;

  private:
    // What a reconfiguration event is about, per display.
    struct Look {
        bool online = false;
        std::int32_t mode = 0;
        Point origin;
        DisplayID mirrorOf = 0;
    };
    using Looks = std::vector<std::pair<DisplayID, Look>>;

    [[nodiscard]] Looks look() const;
    void settle(const Looks& before, std::unique_lock<std::mutex>& lock);
    void writeStateLocked() const;

    Scheduler& scheduler_;
    mutable std::mutex mutex_;
    SimData data_;
    std::map<int, ReconfigurationHandler> handlers_;
    int nextHandler_ = 1;
    std::optional<std::filesystem::path> stateFile_;
};

}  // namespace lumora::sim
