#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

namespace lumora::test {

// A test with its own Qt application, so that each test starts with an empty event loop.
class QtAppTest : public ::testing::Test {
  protected:
    // Runs the event loop until `done` holds; false when `limit` passes first.
    static bool spinUntil(const std::function<bool()>& done,
                          std::chrono::milliseconds limit = std::chrono::seconds(10)) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!done()) {
            if (std::chrono::steady_clock::now() >= deadline) return false;
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            QCoreApplication::sendPostedEvents();
        }
        return true;
    }

    // Runs the event loop for `duration`, whatever happens.
    static void spinFor(std::chrono::milliseconds duration) {
        (void)spinUntil([] { return false; }, duration);
    }

    // Runs `work` on another thread while this thread keeps its event loop going, and
    // returns what it returned: blocking clients talk to servers on this thread.
    template <class F>
    static auto onWorker(F work) {
        std::atomic<bool> finished{false};
        decltype(work()) result{};
        std::thread worker([&] {
            result = work();
            finished.store(true);
        });
        const bool done = spinUntil([&] { return finished.load(); });
        worker.join();
        EXPECT_TRUE(done) << "the worker did not finish in time";
        return result;
    }

  private:
    int argc_ = 1;
    char name_[16] = "test_runtime";
    char* argv_[2] = {name_, nullptr};
    QCoreApplication app_{argc_, argv_};
};

}  // namespace lumora::test
