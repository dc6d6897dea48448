#pragma once

#include <functional>
#include <memory>

#include "platform/Scheduler.h"

namespace lumora {

// Merges the display server's reconfiguration events, which come in bursts (a dock brings ten
// changes within a second), into at most two refreshes and one DDC rescan per burst:
//  - the first refresh comes a fixed delay after the first event, so a single change shows
//    quickly;
//  - events after it are merged into one more refresh once the burst has settled (no event
//    for kSettle), or kLimit after the first of them at the latest;
//  - displays added or removed ask for one DDC rescan when the burst has settled the same way:
//    a monitor that just appeared rarely answers DDC/CI at once anyway, and scanning each
//    step of a dock's burst would only queue scans of monitors that are still coming up.
// Main queue only.
class ReconfigurationBurst {
  public:
    static constexpr double kFirstRefreshDelay = 0.3;
    static constexpr double kSettle = 0.5;
    static constexpr double kLimit = 1.5;

    struct Actions {
        std::function<void()> refresh;
        std::function<void()> rescan;
    };

    ReconfigurationBurst(Scheduler& scheduler, Actions actions);
    ~ReconfigurationBurst();
    ReconfigurationBurst(const ReconfigurationBurst&) = delete;
    ReconfigurationBurst& operator=(const ReconfigurationBurst&) = delete;

    // One event; `addedOrRemoved` when a display came or went.
    void event(bool addedOrRemoved);
    // A rescan is asked for and has not run yet.
    [[nodiscard]] bool rescanPending() const { return rescan_.pending; }
    // A refresh is due and has not started yet.
    [[nodiscard]] bool refreshPending() const { return firstPending_ || later_.pending; }

  private:
    // Work that runs once events have stopped for kSettle, or kLimit after its first event.
    struct Settling {
        bool pending = false;
        double first = 0;
        double last = 0;
    };
    void settle(Settling& settling, void (ReconfigurationBurst::*run)());
    void runLaterRefresh();
    void runRescan();

    Scheduler& scheduler_;
    Actions actions_;
    bool firstPending_ = false;
    double firstRan_ = -1;  // when the first refresh of the current burst ran
    Settling later_;
    Settling rescan_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  // queued work checks it
};

}  // namespace lumora
