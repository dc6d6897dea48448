#include <gtest/gtest.h>

#include <QCoreApplication>
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

// What ran, in order, from whichever thread; and how long after the start.
class Journal {
  public:
    void add(std::string entry) {
        std::lock_guard lock(mutex_);
        entries_.push_back(std::move(entry));
        elapsed_.push_back(Clock::now() - start_);
    }
    [[nodiscard]] std::vector<std::string> entries() const {
        std::lock_guard lock(mutex_);
        return entries_;
    }
    [[nodiscard]] std::size_t size() const { return entries().size(); }
    [[nodiscard]] Clock::duration elapsed(std::size_t i) const {
        std::lock_guard lock(mutex_);
        return elapsed_.at(i);
    }

  private:
    mutable std::mutex mutex_;
    Clock::time_point start_ = Clock::now();
    std::vector<std::string> entries_;
    std::vector<Clock::duration> elapsed_;
};

class SchedulerTest : public test::QtAppTest {
  protected:
    QtScheduler scheduler;
    Journal journal;
};

TEST_F(SchedulerTest, MainQueueRunsAfterThePosterReturnsInDueThenPostingOrder) {
    auto& main = scheduler.mainQueue();
    main.postAfter(0.06, [&] { journal.add("late"); });
    main.postAfter(0.02, [&] { journal.add("early"); });
    main.post([&] { journal.add("first"); });
    main.post([&] { journal.add("second"); });
    main.postAfter(0, [&] { journal.add("third"); });
    EXPECT_EQ(journal.size(), 0u) << "posting never runs the task on the spot";

    ASSERT_TRUE(spinUntil([&] { return journal.size() == 5; }));
    EXPECT_EQ(journal.entries(),
              (std::vector<std::string>{"first", "second", "third", "early", "late"}));
    EXPECT_GE(journal.elapsed(3), 20ms);
    EXPECT_GE(journal.elapsed(4), 60ms);
}

TEST_F(SchedulerTest, CancelledItemsNeverRun) {
    auto& main = scheduler.mainQueue();
    auto now = main.post([&] { journal.add("cancelled post"); });
    auto later = main.postAfter(0.01, [&] { journal.add("cancelled delay"); });
    main.postAfter(0.04, [&] { journal.add("kept"); });
    now->cancel();
    later->cancel();

    ASSERT_TRUE(spinUntil([&] { return journal.size() == 1; }));
    spinFor(20ms);
    EXPECT_EQ(journal.entries(), std::vector<std::string>{"kept"});
}

TEST_F(SchedulerTest, PostsFromOtherThreadsRunOnTheMainThreadInEachPostersOrder) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 25;
    QThread* mainThread = QThread::currentThread();
    std::atomic<int> offMain{0};
    std::vector<std::vector<int>> seen(kThreads);  // touched on the main thread only
    std::vector<std::thread> posters;
    for (int t = 0; t < kThreads; ++t) {
        posters.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i) {
                scheduler.mainQueue().post([&, t, i] {
                    if (QThread::currentThread() != mainThread) ++offMain;
                    seen[t].push_back(i);
                });
                // A delayed item from a worker gets its timer on the main thread.
                scheduler.mainQueue().postAfter(0.005, [&, t] {
                    if (QThread::currentThread() != mainThread) ++offMain;
                    seen[t].push_back(-1);
                });
            }
        });
    }
    for (auto& poster : posters)
        poster.join();

    ASSERT_TRUE(spinUntil([&] {
        std::size_t total = 0;
        for (const auto& s : seen)
            total += s.size();
        return total == kThreads * kPerThread * 2;
    }));
    EXPECT_EQ(offMain.load(), 0);
    for (const auto& s : seen) {
        std::vector<int> immediate;
        for (int v : s)
            if (v >= 0) immediate.push_back(v);
        std::vector<int> expected(kPerThread);
        for (int i = 0; i < kPerThread; ++i)
            expected[i] = i;
        EXPECT_EQ(immediate, expected);
    }
}

TEST_F(SchedulerTest, RepeatingTimerFiresEveryIntervalUntilCancelled) {
    std::atomic<int> precise{0};
    auto token = scheduler.repeat(0.01, 0, [&] { ++precise; });
    // Started from a worker: the timer still lives on the main thread.
    std::atomic<int> coarse{0};
    std::atomic<bool> coarseOffMain{false};
    QThread* mainThread = QThread::currentThread();
    TaskHandle coarseToken;
    std::thread([&] {
        coarseToken = scheduler.repeat(0.01, 0.005, [&] {
            if (QThread::currentThread() != mainThread) coarseOffMain = true;
            ++coarse;
        });
    }).join();
    EXPECT_EQ(precise.load(), 0) << "the first firing is one interval away";

    const auto started = Clock::now();
    ASSERT_TRUE(spinUntil([&] { return precise >= 3 && coarse >= 3; }));
    EXPECT_GE(Clock::now() - started, 30ms);
    EXPECT_FALSE(coarseOffMain.load());

    token->cancel();
    coarseToken->cancel();
    const int preciseAtCancel = precise;
    const int coarseAtCancel = coarse;
    spinFor(60ms);
    EXPECT_EQ(precise.load(), preciseAtCancel);
    EXPECT_EQ(coarse.load(), coarseAtCancel);
}

TEST_F(SchedulerTest, SerialQueueRunsOnOneOtherThreadInDueThenSubmissionOrder) {
    auto queue = scheduler.makeSerialQueue("lumora.ddc");
    std::mutex mutex;
    std::vector<std::thread::id> threads;
    auto note = [&](const std::string& what) {
        {
            std::lock_guard lock(mutex);
            threads.push_back(std::this_thread::get_id());
        }
        journal.add(what);
    };
    queue->postAfter(0.05, [&] { note("late"); });
    queue->postAfter(0.02, [&] { note("early"); });
    auto dropped = queue->postAfter(0.03, [&] { note("cancelled"); });
    queue->post([&] { note("first"); });
    queue->post([&] { note("second"); });
    dropped->cancel();

    ASSERT_TRUE(spinUntil([&] { return journal.size() == 4; }));
    spinFor(20ms);
    EXPECT_EQ(journal.entries(), (std::vector<std::string>{"first", "second", "early", "late"}));
    EXPECT_GE(journal.elapsed(2), 20ms);
    EXPECT_GE(journal.elapsed(3), 50ms);
    std::lock_guard lock(mutex);
    for (const auto& id : threads) {
        EXPECT_EQ(id, threads.front());
        EXPECT_NE(id, std::this_thread::get_id());
    }
}

TEST_F(SchedulerTest, DestroyingASerialQueueFinishesTheRunningItemAndRunsNothingMore) {
    auto queue = scheduler.makeSerialQueue("lumora.test");
    std::atomic<bool> started{false};
    std::atomic<bool> finished{false};
    std::atomic<bool> laterRan{false};
    queue->post([&] {
        started = true;
        std::this_thread::sleep_for(30ms);
        finished = true;
    });
    queue->post([&] { laterRan = true; });
    queue->postAfter(0.01, [&] { laterRan = true; });
    while (!started)
        std::this_thread::yield();

    queue.reset();  // joins
    EXPECT_TRUE(finished.load());
    std::this_thread::sleep_for(30ms);
    EXPECT_FALSE(laterRan.load());
}

TEST_F(SchedulerTest, ASerialQueueMayBeReleasedByItsOwnItem) {
    auto queue = scheduler.makeSerialQueue("lumora.test");
    std::atomic<bool> release{false};
    std::atomic<bool> done{false};
    queue->post([&release, &done, self = queue]() mutable {
        while (!release)
            std::this_thread::yield();
        self.reset();  // the last owner: the queue goes away on its own thread
        done = true;
    });
    queue.reset();
    release = true;
    ASSERT_TRUE(spinUntil([&] { return done.load(); }));
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
