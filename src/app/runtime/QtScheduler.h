#pragma once

#include <memory>
#include <string>

#include "platform/Scheduler.h"

class QObject;

namespace lumora::app {

// Time and threads of the running program. The main queue is the Qt event loop of the thread
// that builds the scheduler (the main thread); posting to it is safe from any thread. Serial
// queues are ThreadWorkQueues. Build it after the QCoreApplication and destroy it before; no
// other thread may post to the main queue once its destruction has begun.
class QtScheduler final : public Scheduler {
  public:
    QtScheduler();
    ~QtScheduler() override;
    QtScheduler(const QtScheduler&) = delete;
    QtScheduler& operator=(const QtScheduler&) = delete;

    // Seconds since boot, sleep included where the system counts it.
    [[nodiscard]] double uptime() const override;
    WorkQueue& mainQueue() override;
    std::shared_ptr<WorkQueue> makeSerialQueue(const std::string& label) override;
    // A QTimer on the main thread; coarse (the system may batch it) when tolerance > 0.
    TaskHandle repeat(double interval, double tolerance, Task task) override;
    // Blocks the calling thread.
    void sleep(double seconds) override;

  private:
    std::unique_ptr<QObject> context_;  // lives on the main thread; posted work runs "on" it
    std::unique_ptr<WorkQueue> main_;
};

}  // namespace lumora::app
