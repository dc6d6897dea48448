#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Scheduler.h"

namespace lumora::sim {

// Virtual time for tests and the simulated machine: nothing runs until advance() is called,
// and then every due item runs on the calling thread in order of due time, then submission.
// sleep() moves the clock forward at once, as a busy serial queue would experience it.
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
    // sleeps inside the items carried it past).
    void advance(double seconds);
    // Runs what is due now, including items posted without delay by the items themselves.
    void runDue() { advance(0); }
    // Items waiting, repeating timers included.
    [[nodiscard]] std::size_t pendingCount() const;

    // Internal: used by the queues this scheduler hands out.
    TaskHandle enqueue(const std::string& queue, double delay, double interval, Task task);

private:
    struct Item {
        double due;
        std::uint64_t sequence;
        std::string queue;
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
};

}  // namespace lumora::sim
