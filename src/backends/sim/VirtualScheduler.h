#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/Scheduler.h"

namespace lumora::sim {

// Virtual time for tests and the simulated machine: nothing runs until advance() is called,
// and then every due item runs on the calling thread in order of due time, then submission.
// Each serial queue keeps its own time, as its own thread would: sleep() inside one of its
// items moves only that queue's clock (what uptime() says and when posts from there fall
// due), and its next item starts no earlier than the last one ended. Two queues therefore
// wait in parallel. Outside serial-queue items sleep() moves the one clock.
class VirtualScheduler final : public Scheduler {
  public:
    explicit VirtualScheduler(double startUptime = 1000.0);
    ~VirtualScheduler() override;

    [[nodiscard]] double uptime() const override;
    WorkQueue& mainQueue() override;
    std::shared_ptr<WorkQueue> makeSerialQueue(const std::string& label) override;
    TaskHandle repeat(double interval, double tolerance, Task task) override;
    void sleep(double seconds) override;

    // Runs everything due up to now + seconds; the clock ends at that time (or later, when
    // sleeps outside serial queues carried it past).
    void advance(double seconds);
    // Runs what is due now, including items posted without delay by the items themselves.
    void runDue() { advance(0); }
    // Items waiting, repeating timers included.
    [[nodiscard]] std::size_t pendingCount() const;

    // Internal: used by the queues this scheduler hands out.
    // Queue 0 is the main queue; serial queues get their own numbers.
    TaskHandle enqueue(std::uint64_t queue, double delay, double interval, Task task);

  private:
    struct Item {
        double due;
        std::uint64_t sequence;
        std::uint64_t queue;
        double interval;  // 0 for a one-shot item
        Task task;
        TaskHandle token;
    };

    mutable std::mutex mutex_;
    double now_;
    std::uint64_t nextSequence_ = 0;
    std::vector<Item> items_;
    bool running_ = false;
    std::unique_ptr<WorkQueue> main_;
    std::uint64_t nextQueue_ = 1;
    // Per serial queue: when its last item ended.
    std::map<std::uint64_t, double> busyUntil_;
    // The serial-queue item running now, with its queue's clock.
    struct Running {
        std::uint64_t queue;
        double now;
    };
    std::optional<Running> current_;
};

}  // namespace lumora::sim
