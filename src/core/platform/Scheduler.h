#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace lumora {

using Task = std::function<void()>;

// Handle of a queued task or timer. Cancelling stops an item that has not started yet;
// an item that is already running completes.
class TaskToken {
  public:
    void cancel() { cancelled_.store(true, std::memory_order_release); }
    [[nodiscard]] bool cancelled() const { return cancelled_.load(std::memory_order_acquire); }

  private:
    std::atomic<bool> cancelled_{false};
};
using TaskHandle = std::shared_ptr<TaskToken>;

// Something that can wait. DDC/CI exchanges wait between packets; in tests the wait is
// virtual and only moves the clock.
class Sleeper {
  public:
    virtual ~Sleeper() = default;
    virtual void sleep(double seconds) = 0;
};

// A serial queue: items run one at a time, in order of their due time, then of submission.
class WorkQueue {
  public:
    virtual ~WorkQueue() = default;
    virtual TaskHandle post(Task task) = 0;
    virtual TaskHandle postAfter(double seconds, Task task) = 0;
};

// Time and threads. Production: the main queue is the UI event loop and every serial queue
// is a worker thread. Tests: a virtual clock that runs due items on the calling thread.
class Scheduler : public Sleeper {
  public:
    // Monotonic seconds since boot.
    [[nodiscard]] virtual double uptime() const = 0;
    virtual WorkQueue& mainQueue() = 0;
    virtual std::shared_ptr<WorkQueue> makeSerialQueue(const std::string& label) = 0;
    // Repeating timer on the main queue; the first firing is one interval from now.
    virtual TaskHandle repeat(double interval, double tolerance, Task task) = 0;
};

}  // namespace lumora
