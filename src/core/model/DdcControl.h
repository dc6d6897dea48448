#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "ddc/DDCService.h"
#include "ddc/DdcCapabilities.h"
#include "ddc/VCP.h"
#include "log/Log.h"
#include "model/DdcCapabilityMemory.h"
#include "model/DdcMemory.h"
#include "model/DdcTimingMemory.h"
#include "model/Observable.h"
#include "platform/AVServices.h"
#include "platform/Defaults.h"
#include "platform/DisplayServer.h"
#include "platform/Scheduler.h"

namespace lumora {

class Displays;

// The monitors' DDC/CI controls as the model knows them: which displays have a channel, the
// last value of each control, writes that do not flood the monitors' slow I2C channels, and
// giving back what a monitor forgot: the last brightness, contrast and volume the user set
// (remembered across restarts) are read after a wake or a reconnection and written again
// where the monitor lost them.
//
// Main thread only. Finding the channels runs on the serial queue "lumora.ddc"; the traffic
// of each bus (reads of a scan, writes, restores) on that bus's own serial queue, so buses
// run in parallel and one bus is strictly serial. Work carries the values captured when it
// was queued, and results come back on the main queue. Delayed work holds the object weakly.
class DdcControl : public std::enable_shared_from_this<DdcControl> {
  public:
    using Values = std::map<DisplayID, std::map<std::uint8_t, double>>;

    static constexpr const char* kQueueLabel = "lumora.ddc";
    // A write waits this long for a newer value of the same display and control: a dragged
    // slider must not flood the monitor.
    static constexpr double kDebounce = 0.08;
    // A write that found the bus held by another program (for its whole wait) goes out again
    // this long after, this many times at most.
    static constexpr double kBusyRetryDelay = 2.0;
    static constexpr int kBusyRetries = 3;
    // A command for a monitor whose first scan is still running waits at most this long.
    static constexpr double kFirstScanWait = 3.0;
    // Monitors often ignore DDC/CI for a few seconds after waking: a restore that did not
    // read back is tried again this long after its first attempt, then given up.
    static constexpr std::array<double, 3> kRestoreRetries{2.0, 5.0, 10.0};

    enum class RestoreCause { wake, reconnection, serverRestart };

    struct Deps {
        Scheduler& scheduler;
        DisplayServer& server;
        AVServices& av;
        Displays& displays;
        Defaults& defaults;
        Log& log;
    };

    static std::shared_ptr<DdcControl> create(Deps deps, const Signal* willChange);
    ~DdcControl();

    [[nodiscard]] const Published<Values>& values() const { return values_; }
    // Displays whose channel answered at least one read in the last scan.
    [[nodiscard]] const Published<std::set<DisplayID>>& available() const { return available_; }
    [[nodiscard]] bool hasChannel(DisplayID display) const { return services_.contains(display); }
    // What each monitor's capabilities string lists, for monitors that gave a parsable one.
    [[nodiscard]] const Published<std::map<DisplayID, DdcCapabilities>>& capabilities() const {
        return capabilities_;
    }
    // The normalised value last known, if any.
    [[nodiscard]] std::optional<double> value(DisplayID display, VCP vcp) const;

    // Finds the channels of the external displays and reads their controls.
    void rescan();
    // Starts a scan when an online external display has never been scanned (a display the
    // model sees before the reconfiguration event that announces it).
    void scanNewDisplays();
    // Caches and remembers value (0…1) at once; the monitor gets round(value × max)
    // kDebounce later, and the remembered values are stored when it goes out.
    void set(DisplayID display, VCP vcp, double value, std::uint16_t max);
    // One raw write at once, logged, remembered and stored; `sent` (optional) hears on the
    // main queue how the write went.
    using Sent = std::function<void(DdcWriteStatus)>;
    void send(DisplayID display, VCP vcp, std::uint16_t raw, Sent sent = nullptr);

    // Whether monitors get back what they forgot (on unless the user switched it off).
    void setRestoring(bool on);
    // The system or the displays woke: every online monitor is scanned again, and then the
    // remembered ones are restored (when restoring is on). A monitor that answered before
    // keeps its values and its DDC path while it ignores DDC/CI just after waking. Calls
    // before that scan has finished join it.
    void didWake();
    // The agent starts again after its display server went away: the next scan is followed
    // by a restore of what each monitor was given, as after a wake.
    void restoreAfterNextScan();

    // Runs `then` once the first scan of `display` (nothing: of every display) has finished,
    // at once when none is running, and at the latest kFirstScanWait from now.
    void whenScanned(std::optional<DisplayID> display, std::function<void()> then);
    [[nodiscard]] bool scanning(std::optional<DisplayID> display) const;

  private:
    struct Passkey {};

  public:
    DdcControl(Passkey, Deps deps, const Signal* willChange);

  private:
    using Services = std::map<DisplayID, std::shared_ptr<DDCService>>;
    struct Waiter {
        std::optional<DisplayID> display;
        std::function<void()> then;
        TaskHandle timeout;
    };
    // One monitor being given back its remembered values.
    struct Restore {
        RestoreCause cause = RestoreCause::wake;
        std::string key;  // the monitor's persistent key
        double startedAt = 0;
        std::size_t retries = 0;  // of kRestoreRetries used
        TaskHandle retry;
        std::uint64_t generation = 0;  // tells a stale attempt's result apart
        // Codes written by any attempt: one that lands while the monitor wakes and reads back
        // only at the next is restored all the same.
        std::set<std::uint8_t> written;
    };
    // What one attempt saw on the wire, per code.
    struct RestoreReading {
        std::map<std::uint8_t, std::pair<std::uint16_t, std::uint16_t>> read;
        std::set<std::uint8_t> written;
    };

    [[nodiscard]] std::vector<DisplayID> candidates() const;
    // One scan in flight: its channels and what their buses have read so far.
    struct Scan {
        Services services;
        std::vector<DisplayID> ids;
        Values values;
        std::size_t busesLeft = 0;
    };
    // The channels of a scan are open: each bus reads its monitors.
    void readBuses(std::uint64_t scan, Services services, const std::vector<DisplayID>& ids,
                   const std::set<DisplayID>& askCapabilities);
    void busRead(std::uint64_t scan, Values values);
    WorkQueue& busQueue(std::uint64_t bus);
    void publish(Services services, Values values, const std::vector<DisplayID>& scanned);
    // The debounced write of one control, `delay` from now on the channel's bus queue.
    void queueWrite(const std::shared_ptr<DDCService>& channel, DisplayID display,
                    std::uint8_t byte, std::uint16_t raw, double delay, int retries);
    // Capabilities strings read in a scan: kept per monitor, then published with the rest.
    void capabilitiesRead(const std::map<DisplayID, std::string>& texts);
    void publishCapabilities();
    void releaseWaiters();
    void startRestore(DisplayID display, RestoreCause cause);
    void attemptRestore(DisplayID display);
    void finishAttempt(DisplayID display, std::uint64_t generation,
                       const DdcMemory::Controls& wanted, const RestoreReading& reading);
    void cancelRestore(DisplayID display);
    // The waits a monitor's channel learned changed: kept for the next scan; settled or
    // stepped back, also for the next start, and said once.
    void learnedTiming(DisplayID display, const std::string& key, const DdcTimingLearner& learner,
                       DdcTimingLearner::Change change);

    Deps deps_;
    Published<Values> values_;
    Published<std::set<DisplayID>> available_;
    Published<std::map<DisplayID, DdcCapabilities>> capabilities_;
    Services services_;
    // Each channel's persistent key, read once when the channels are published: a slider step
    // must not ask the display server (a round trip on some servers).
    std::map<DisplayID, std::string> keys_;
    std::shared_ptr<WorkQueue> queue_;
    std::map<std::uint64_t, std::shared_ptr<WorkQueue>> busQueues_;
    std::map<std::uint64_t, Scan> scans_;  // by scan number, in the order they started
    std::uint64_t nextScan_ = 1;
    // At most one debounced write per display and control, and how many the user has asked
    // for (a retry goes out only while no newer value was asked for).
    std::map<std::pair<DisplayID, std::uint8_t>, TaskHandle> pending_;
    std::map<std::pair<DisplayID, std::uint8_t>, std::uint64_t> writeGenerations_;
    std::set<DisplayID> firstScan_;  // displays whose first scan has not finished
    std::set<DisplayID> scanned_;    // online displays scanned at least once
    std::vector<std::shared_ptr<Waiter>> waiters_;

    DdcMemory memory_;
    DdcTimingMemory timingMemory_;
    std::map<std::string, DdcTimingLearner> learners_;  // by persistent key
    DdcCapabilityMemory capabilityMemory_;
    // Monitors asked for their capabilities in this run: one without an answer is not asked at
    // every scan.
    std::set<std::string> capabilitiesAsked_;
    bool restoring_ = true;
    bool scannedOnce_ = false;  // later new displays are reconnections
    bool wakeScanQueued_ = false;
    std::set<DisplayID> waking_;  // online when the system woke, not yet scanned since
    std::map<DisplayID, RestoreCause> restoreAfterScan_;
    std::map<DisplayID, Restore> restores_;
    std::uint64_t nextGeneration_ = 1;
};

}  // namespace lumora
