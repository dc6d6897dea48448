#include "runtime/ThreadWorkQueue.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>
#include <thread>
#include <tuple>
#include <utility>

#if defined(__linux__)
#include <pthread.h>
#endif

namespace lumora::app {

namespace {

using Clock = std::chrono::steady_clock;

// The kernel keeps at most 15 characters of a thread's name.
constexpr std::size_t kThreadNameLength = 15;

void nameThisThread(const std::string& label) {
#if defined(__linux__)
    pthread_setname_np(pthread_self(), label.substr(0, kThreadNameLength).c_str());
#elif defined(__APPLE__)
    pthread_setname_np(label.c_str());
#else
    (void)label;
#endif
}

// Delays are rounded up so that an item never runs before its time.
Clock::duration delayOf(double seconds) {
    if (!(seconds > 0)) return Clock::duration::zero();
    return std::chrono::ceil<Clock::duration>(std::chrono::duration<double>(seconds));
}

struct Item {
    Clock::time_point due;
    std::uint64_t sequence = 0;
    // Mutable so that the task can be moved out of the ordered set just before it leaves.
    mutable Task task;
    TaskHandle token;
    bool operator<(const Item& other) const {
        return std::tie(due, sequence) < std::tie(other.due, other.sequence);
    }
};

}  // namespace

struct ThreadWorkQueue::State {
    std::mutex mutex;
    std::condition_variable wake;
    std::set<Item> items;
    std::uint64_t nextSequence = 0;
    bool stopping = false;
    std::thread thread;

    static void run(const std::shared_ptr<State>& self, const std::string& label) {
        nameThisThread(label);
        std::unique_lock lock(self->mutex);
        for (;;) {
            if (self->stopping) return;
            if (self->items.empty()) {
                self->wake.wait(lock);
                continue;
            }
            auto first = self->items.begin();
            if (first->due > Clock::now()) {
                self->wake.wait_until(lock, first->due);
                continue;
            }
            Task task = std::move(first->task);
            TaskHandle token = first->token;
            self->items.erase(first);
            lock.unlock();
            if (!token->cancelled()) task();
            task = nullptr;  // captured state goes away outside the lock: it may post again
            lock.lock();
        }
    }
};

ThreadWorkQueue::ThreadWorkQueue(std::string label)
    : label_(std::move(label)), state_(std::make_shared<State>()) {
    state_->thread = std::thread(&State::run, state_, label_);
}

ThreadWorkQueue::~ThreadWorkQueue() {
    std::set<Item> dropped;  // destroyed last, outside the lock
    {
        std::lock_guard lock(state_->mutex);
        state_->stopping = true;
        dropped.swap(state_->items);
    }
    state_->wake.notify_all();
    if (state_->thread.get_id() == std::this_thread::get_id()) {
        // The last owner was one of our own items: the thread ends when that item returns.
        state_->thread.detach();
    } else {
        state_->thread.join();
    }
}

TaskHandle ThreadWorkQueue::post(Task task) {
    return postAfter(0, std::move(task));
}

TaskHandle ThreadWorkQueue::postAfter(double seconds, Task task) {
    auto token = std::make_shared<TaskToken>();
    {
        std::lock_guard lock(state_->mutex);
        if (state_->stopping) return token;
        state_->items.insert(
            Item{Clock::now() + delayOf(seconds), state_->nextSequence++, std::move(task), token});
    }
    state_->wake.notify_one();
    return token;
}

}  // namespace lumora::app
