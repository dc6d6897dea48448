#pragma once

#include <memory>
#include <string>

#include "platform/Scheduler.h"

namespace lumora::app {

// A serial queue on its own thread: items run one at a time, in order of due time, then of
// submission. Destroying the queue lets the running item finish, runs nothing more and joins
// the thread (or lets it go, when the last owner is one of the queue's own items).
class ThreadWorkQueue final : public WorkQueue {
  public:
    explicit ThreadWorkQueue(std::string label);
    ~ThreadWorkQueue() override;
    ThreadWorkQueue(const ThreadWorkQueue&) = delete;
    ThreadWorkQueue& operator=(const ThreadWorkQueue&) = delete;

    TaskHandle post(Task task) override;
    TaskHandle postAfter(double seconds, Task task) override;

    [[nodiscard]] const std::string& label() const { return label_; }

    struct State;

  private:
    std::string label_;
    std::shared_ptr<State> state_;  // shared with the thread, which may outlive the queue
};

}  // namespace lumora::app
