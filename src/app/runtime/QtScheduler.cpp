#include "runtime/QtScheduler.h"

#include <time.h>

#include <QCoreApplication>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <chrono>
#include <cmath>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "base/Check.h"
#include "runtime/ThreadWorkQueue.h"

namespace lumora::app {

namespace {

// Qt timers count whole milliseconds; rounding up keeps a delayed item from running early.
int millisecondsUpTo(double seconds) {
    constexpr double kMaxMilliseconds = 2'000'000'000.0;  // the range of a Qt timer interval
    double ms = std::ceil(seconds * 1000.0);
    if (!(ms > 0)) return 0;
    return static_cast<int>(std::min(ms, kMaxMilliseconds));
}

// The main thread's queue. Posted items wait in a locked list of our own and one queued call
// at a time drains it, so the hand-over between threads is a plain mutex, not Qt internals.
class MainQueue final : public WorkQueue {
  public:
    explicit MainQueue(QObject* context) : context_(context) {}

    TaskHandle post(Task task) override {
        auto token = std::make_shared<TaskToken>();
        std::lock_guard lock(mutex_);
        pending_.push_back({token, std::move(task)});
        if (!drainQueued_) {
            drainQueued_ = true;
            // Always through the event loop, even from the main thread: the caller finishes
            // first.
            QMetaObject::invokeMethod(
                context_, [this] { drain(); }, Qt::QueuedConnection);
        }
        return token;
    }

    TaskHandle postAfter(double seconds, Task task) override {
        const int ms = millisecondsUpTo(seconds);
        if (ms == 0) return post(std::move(task));
        auto token = std::make_shared<TaskToken>();
        // A timer belongs to the thread that starts it, so it is started on the main thread.
        Task start = [this, ms, token, task = std::move(task)] {
            QTimer::singleShot(ms, Qt::PreciseTimer, context_, [token, task] {
                if (!token->cancelled()) task();
            });
        };
        if (QThread::currentThread() == context_->thread()) {
            start();
        } else {
            post(std::move(start));
        }
        return token;
    }

  private:
    struct Item {
        TaskHandle token;
        Task task;
    };

    void drain() {
        std::deque<Item> items;
        {
            std::lock_guard lock(mutex_);
            items.swap(pending_);
            drainQueued_ = false;
        }
        for (auto& item : items) {
            if (!item.token->cancelled()) item.task();
        }
    }

    QObject* context_;
    std::mutex mutex_;
    std::deque<Item> pending_;
    bool drainQueued_ = false;
};

}  // namespace

QtScheduler::QtScheduler()
    : context_(std::make_unique<QObject>()), main_(std::make_unique<MainQueue>(context_.get())) {
    check(QCoreApplication::instance() != nullptr, "QtScheduler needs a QCoreApplication");
}

QtScheduler::~QtScheduler() = default;

double QtScheduler::uptime() const {
    timespec now{};
#if defined(CLOCK_BOOTTIME)
    if (clock_gettime(CLOCK_BOOTTIME, &now) == 0) {
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    }
#endif
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

WorkQueue& QtScheduler::mainQueue() {
    return *main_;
}

std::shared_ptr<WorkQueue> QtScheduler::makeSerialQueue(const std::string& label) {
    return std::make_shared<ThreadWorkQueue>(label);
}

TaskHandle QtScheduler::repeat(double interval, double tolerance, Task task) {
    auto token = std::make_shared<TaskToken>();
    // A repeating timer of 0 ms would spin the event loop.
    const int ms = std::max(1, millisecondsUpTo(interval));
    const Qt::TimerType type = tolerance > 0 ? Qt::CoarseTimer : Qt::PreciseTimer;
    Task start = [context = context_.get(), ms, type, token, task = std::move(task)] {
        auto* timer = new QTimer(context);  // owned by the context until it stops
        timer->setTimerType(type);
        timer->setInterval(ms);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, token, task] {
            if (token->cancelled()) {
                timer->stop();
                timer->deleteLater();
                return;
            }
            task();
        });
        timer->start();
    };
    // A timer belongs to the thread that starts it, so it is started on the main thread.
    if (QThread::currentThread() == context_->thread()) {
        start();
    } else {
        main_->post(std::move(start));
    }
    return token;
}

void QtScheduler::sleep(double seconds) {
    if (!(seconds > 0)) return;
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

}  // namespace lumora::app
