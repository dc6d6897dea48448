#include "model/ReconfigurationBurst.h"

#include <algorithm>
#include <utility>

namespace lumora {

ReconfigurationBurst::ReconfigurationBurst(Scheduler& scheduler, Actions actions)
    : scheduler_(scheduler), actions_(std::move(actions)) {}

ReconfigurationBurst::~ReconfigurationBurst() = default;

void ReconfigurationBurst::event(bool addedOrRemoved) {
    const double now = scheduler_.uptime();
    const std::weak_ptr<bool> alive = alive_;
    if (addedOrRemoved) {
        const bool queued = rescan_.pending;
        if (!queued) rescan_ = {true, now, now};
        rescan_.last = now;
        if (!queued) settle(rescan_, &ReconfigurationBurst::runRescan);
    }
    if (firstPending_) return;  // merged into the first refresh
    const bool inBurst = firstRan_ >= 0 && now - std::max(firstRan_, later_.last) < kSettle;
    if (!inBurst) {
        firstPending_ = true;
        later_ = {};
        scheduler_.mainQueue().postAfter(kFirstRefreshDelay, [this, alive] {
            if (alive.expired()) return;
            firstPending_ = false;
            firstRan_ = scheduler_.uptime();
            actions_.refresh();
        });
        return;
    }
    const bool queued = later_.pending;
    if (!queued) later_ = {true, now, now};
    later_.last = now;
    if (!queued) settle(later_, &ReconfigurationBurst::runLaterRefresh);
}

// Runs `run` kSettle after the last event, but no later than kLimit after the first.
void ReconfigurationBurst::settle(Settling& settling, void (ReconfigurationBurst::*run)()) {
    const double now = scheduler_.uptime();
    const double due = std::min(settling.last + kSettle, settling.first + kLimit);
    const std::weak_ptr<bool> alive = alive_;
    scheduler_.mainQueue().postAfter(std::max(0.0, due - now), [this, alive, &settling, run] {
        if (alive.expired()) return;
        const double at = scheduler_.uptime();
        // Events came meanwhile: wait again for the burst to settle.
        if (at < std::min(settling.last + kSettle, settling.first + kLimit)) {
            settle(settling, run);
            return;
        }
        (this->*run)();
    });
}

void ReconfigurationBurst::runLaterRefresh() {
    later_.pending = false;
    actions_.refresh();
}

void ReconfigurationBurst::runRescan() {
    rescan_.pending = false;
    actions_.rescan();
}

}  // namespace lumora
