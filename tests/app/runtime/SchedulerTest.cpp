#include <gtest/gtest.h>

#include <QThread>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "RuntimeTestSupport.h"
#include "runtime/QtScheduler.h"

namespace lumora::app {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Entries = std::vector<std::string>;

class SchedulerTest : public test::QtAppTest {
  protected:
    // What ran, in order, from whichever thread; when, after the start; and on which thread.
    void note(std::string what) {
        std::lock_guard lock(mutex);
        entries.push_back(std::move(what));
        elapsed.push_back(Clock::now() - start);
        threads.push_back(std::this_thread::get_id());
    }
    Entries ran() {
        std::lock_guard lock(mutex);
        return entries;
    }
    bool ranCount(std::size_t n) {
        return spinUntil([&] { return ran().size() == n; });
    }

    QtScheduler scheduler;
    std::mutex mutex;
    Clock::time_point start = Clock::now();
    Entries entries;
    std::vector<Clock::duration> elapsed;
    std::vector<std::thread::id> threads;
};

// Both kinds of queue run what is due first, then in posting order, and skip what was cancelled.
TEST_F(SchedulerTest, QueuesRunInDueThenPostingOrderOnTheirOwnThread) {
    auto serial = scheduler.makeSerialQueue("lumora.ddc");
    for (WorkQueue* queue : {&scheduler.mainQueue(), serial.get()}) {
        const bool main = queue == &scheduler.mainQueue();
        SCOPED_TRACE(main ? "main queue" : "serial queue");
        {
            std::lock_guard lock(mutex);
            entries.clear();
            elapsed.clear();
            threads.clear();
            start = Clock::now();
        }
        queue->postAfter(0.06, [&] { note("late"); });
        queue->postAfter(0.02, [&] { note("early"); });
        queue->post([&] { note("first"); });
        // A worker may have run a plain post before it could be cancelled.
        if (main) queue->post([&] { note("cancelled post"); })->cancel();
        queue->postAfter(0.01, [&] { note("cancelled delay"); })->cancel();
        queue->post([&] { note("second"); });
        queue->postAfter(0, [&] { note("third"); });
        EXPECT_TRUE(!main || ran().empty()) << "posting never runs the task on the spot";

        ASSERT_TRUE(ranCount(5));
        spinFor(20ms);
        std::lock_guard lock(mutex);
        EXPECT_EQ(entries, (Entries{"first", "second", "third", "early", "late"}));
        EXPECT_GE(elapsed[3], 20ms);
        EXPECT_GE(elapsed[4], 60ms);
        for (const auto& id : threads) {
            EXPECT_EQ(id, threads.front());
            EXPECT_EQ(id == std::this_thread::get_id(), main);
        }
    }
}

TEST_F(SchedulerTest, PostsFromOtherThreadsRunOnTheMainThreadInEachPostersOrder) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 25;
    std::vector<std::thread> posters;
    for (int t = 0; t < kThreads; ++t) {
        posters.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                const std::string name = std::to_string(t) + "." + std::to_string(i);
                scheduler.mainQueue().post([this, name] { note(name); });
                // A delayed item from a worker gets its timer on the main thread.
                scheduler.mainQueue().postAfter(0.005, [this] { note("delayed"); });
            }
        });
    }
    for (auto& poster : posters)
        poster.join();

    ASSERT_TRUE(ranCount(kThreads * kPerThread * 2));
    std::vector<int> next(kThreads, 0);
    for (const std::string& entry : ran()) {
        if (entry == "delayed") continue;
        const int t = entry[0] - '0';
        EXPECT_EQ(entry, std::to_string(t) + "." + std::to_string(next[t]++));
    }
    for (const auto& id : threads)
        EXPECT_EQ(id, std::this_thread::get_id());
}

TEST_F(SchedulerTest, RepeatingTimerFiresEveryIntervalUntilCancelled) {
    std::atomic<int> precise{0};
    std::atomic<int> coarse{0};
    auto token = scheduler.repeat(0.01, 0, [&] { ++precise; });
    // Started from a worker: the timer still lives on the main thread.
    TaskHandle coarseToken;
    std::thread([&] {
        coarseToken = scheduler.repeat(0.01, 0.005, [&] {
            ++coarse;
            note("coarse");
        });
    }).join();
    EXPECT_EQ(precise.load(), 0) << "the first firing is one interval away";

    ASSERT_TRUE(spinUntil([&] { return precise >= 3 && coarse >= 3; }));
    EXPECT_GE(Clock::now() - start, 30ms);
    token->cancel();
    coarseToken->cancel();
    const int preciseAtCancel = precise;
    const int coarseAtCancel = coarse;
    spinFor(60ms);
    EXPECT_EQ(precise.load(), preciseAtCancel);
    EXPECT_EQ(coarse.load(), coarseAtCancel);
    std::lock_guard lock(mutex);
    for (const auto& id : threads)
        EXPECT_EQ(id, std::this_thread::get_id());
}

TEST_F(SchedulerTest, DestroyingASerialQueueFinishesTheRunningItemAndRunsNothingMore) {
    auto queue = scheduler.makeSerialQueue("lumora.test");
    std::atomic<bool> started{false};
    queue->post([&] {
        started = true;
        std::this_thread::sleep_for(30ms);
        note("finished");
    });
    queue->post([&] { note("later"); });
    queue->postAfter(0.01, [&] { note("delayed"); });
    while (!started)
        std::this_thread::yield();
    queue.reset();  // joins
    EXPECT_EQ(ran(), Entries{"finished"});
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(ran(), Entries{"finished"});

    // The last owner may be the queue's own item: it then goes away on its own thread.
    queue = scheduler.makeSerialQueue("lumora.test");
    std::atomic<bool> release{false};
    queue->post([&, self = queue]() mutable {
        while (!release)
            std::this_thread::yield();
        self.reset();
        note("released");
    });
    queue.reset();
    release = true;
    EXPECT_TRUE(ranCount(2));
}

TEST_F(SchedulerTest, SleepWaitsOnTheCallingThreadAndUptimeCountsIt) {
    const double before = scheduler.uptime();
    const auto started = Clock::now();
    scheduler.sleep(0.02);
    EXPECT_GE(Clock::now() - started, 20ms);
    EXPECT_GE(scheduler.uptime() - before, 0.02);
    EXPECT_GT(before, 0.0);
}

}  // namespace
}  // namespace lumora::app
