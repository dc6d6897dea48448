#include "sim/VirtualScheduler.h"

#include <algorithm>

#include "base/Check.h"

namespace lumora::sim {

namespace {

class VirtualQueue final : public WorkQueue {
public:
    VirtualQueue(VirtualScheduler& owner, std::string label)
        : owner_(owner), label_(std::move(label)) {}
    TaskHandle post(Task task) override { return owner_.enqueue(label_, 0, 0, std::move(task)); }
    TaskHandle postAfter(double seconds, Task task) override {
        return owner_.enqueue(label_, seconds, 0, std::move(task));
    }

private:
    VirtualScheduler& owner_;
    std::string label_;
};

}  // namespace

VirtualScheduler::VirtualScheduler(double startUptime)
    : now_(startUptime), main_(std::make_unique<VirtualQueue>(*this, "main")) {}

VirtualScheduler::~VirtualScheduler() = default;

double VirtualScheduler::uptime() const {
    std::lock_guard lock(mutex_);
    return now_;
}

WorkQueue& VirtualScheduler::mainQueue() { return *main_; }

std::shared_ptr<WorkQueue> VirtualScheduler::makeSerialQueue(const std::string& label) {
    return std::make_shared<VirtualQueue>(*this, label);
}

TaskHandle VirtualScheduler::repeat(double interval, double /*tolerance*/, Task task) {
    check(interval > 0, "repeating timer without a positive interval");
    return enqueue("main", interval, interval, std::move(task));
}

void VirtualScheduler::sleep(double seconds) {
    std::lock_guard lock(mutex_);
    if (seconds > 0) now_ += seconds;
}

TaskHandle VirtualScheduler::enqueue(const std::string& queue, double delay, double interval,
                                     Task task) {
    auto token = std::make_shared<TaskToken>();
    std::lock_guard lock(mutex_);
    items_.push_back(Item{now_ + std::max(delay, 0.0), nextSequence_++, queue, interval,
                          std::move(task), token});
    return token;
}

std::size_t VirtualScheduler::pendingCount() const {
    std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(
        items_.begin(), items_.end(), [](const Item& i) { return !i.token->cancelled(); }));
}

void VirtualScheduler::advance(double seconds) {
    std::unique_lock lock(mutex_);
    check(!running_, "VirtualScheduler::advance called from inside a task");
    running_ = true;
    const double target = now_ + std::max(seconds, 0.0);
    for (;;) {
        std::erase_if(items_, [](const Item& i) { return i.token->cancelled(); });
        auto next = std::min_element(items_.begin(), items_.end(), [](const Item& a, const Item& b) {
            return a.due != b.due ? a.due < b.due : a.sequence < b.sequence;
        });
        if (next == items_.end() || next->due > target) break;
        Item item = std::move(*next);
        items_.erase(next);
        now_ = std::max(now_, item.due);
        if (item.interval > 0) {
            // Re-arm before running so the timer keeps its cadence and can cancel itself.
            items_.push_back(Item{item.due + item.interval, nextSequence_++, item.queue,
                                  item.interval, item.task, item.token});
        }
        lock.unlock();
        item.task();
        lock.lock();
    }
    now_ = std::max(now_, target);
    running_ = false;
}

}  // namespace lumora::sim
