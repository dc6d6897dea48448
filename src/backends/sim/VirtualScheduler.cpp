#include "sim/VirtualScheduler.h"

#include <algorithm>

#include "base/Check.h"

namespace lumora::sim {

namespace {

constexpr std::uint64_t kMainQueue = 0;

class VirtualQueue final : public WorkQueue {
  public:
    VirtualQueue(VirtualScheduler& owner, std::uint64_t id) : owner_(owner), id_(id) {}
    TaskHandle post(Task task) override { return owner_.enqueue(id_, 0, 0, std::move(task)); }
    TaskHandle postAfter(double seconds, Task task) override {
        return owner_.enqueue(id_, seconds, 0, std::move(task));
    }

  private:
    VirtualScheduler& owner_;
    std::uint64_t id_;
};

}  // namespace

VirtualScheduler::VirtualScheduler(double startUptime)
    : now_(startUptime), main_(std::make_unique<VirtualQueue>(*this, kMainQueue)) {}

VirtualScheduler::~VirtualScheduler() = default;

double VirtualScheduler::uptime() const {
    std::lock_guard lock(mutex_);
    return current_ ? current_->now : now_;
}

WorkQueue& VirtualScheduler::mainQueue() {
    return *main_;
}

std::shared_ptr<WorkQueue> VirtualScheduler::makeSerialQueue(const std::string& /*label*/) {
    std::lock_guard lock(mutex_);
    return std::make_shared<VirtualQueue>(*this, nextQueue_++);
}

TaskHandle VirtualScheduler::repeat(double interval, double /*tolerance*/, Task task) {
    check(interval > 0, "repeating timer without a positive interval");
    return enqueue(kMainQueue, interval, interval, std::move(task));
}

void VirtualScheduler::sleep(double seconds) {
    std::lock_guard lock(mutex_);
    if (seconds <= 0) return;
    (current_ ? current_->now : now_) += seconds;
}

TaskHandle VirtualScheduler::enqueue(std::uint64_t queue, double delay, double interval,
                                     Task task) {
    auto token = std::make_shared<TaskToken>();
    std::lock_guard lock(mutex_);
    const double from = current_ ? current_->now : now_;
    items_.push_back(Item{from + std::max(delay, 0.0), nextSequence_++, queue, interval,
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
    // A serial queue's item starts when it is due and its queue is free.
    const auto start = [this](const Item& i) {
        if (i.queue == kMainQueue) return i.due;
        auto busy = busyUntil_.find(i.queue);
        return busy == busyUntil_.end() ? i.due : std::max(i.due, busy->second);
    };
    for (;;) {
        std::erase_if(items_, [](const Item& i) { return i.token->cancelled(); });
        auto next =
            std::min_element(items_.begin(), items_.end(), [&](const Item& a, const Item& b) {
                const double sa = start(a);
                const double sb = start(b);
                return sa != sb ? sa < sb : a.sequence < b.sequence;
            });
        if (next == items_.end() || start(*next) > target) break;
        const double at = start(*next);
        Item item = std::move(*next);
        items_.erase(next);
        now_ = std::max(now_, at);
        if (item.interval > 0) {
            // Re-arm before running so the timer keeps its cadence and can cancel itself.
            items_.push_back(Item{item.due + item.interval, nextSequence_++, item.queue,
                                  item.interval, item.task, item.token});
        }
        if (item.queue != kMainQueue) current_ = Running{item.queue, now_};
        lock.unlock();
        item.task();
        lock.lock();
        if (current_) {
            busyUntil_[current_->queue] = current_->now;
            current_.reset();
        }
    }
    now_ = std::max(now_, target);
    running_ = false;
}

}  // namespace lumora::sim
