#include "logind/LogindPower.h"

#include <chrono>
#include <utility>

#include "logind/InhibitorLock.h"

namespace lumora::lx {

namespace {

// Displays take a few seconds to go dark once told to; a request in that time is the same
// request again, not a new one.
constexpr double kDisplaySleepSeconds = 3.0;

// Held until destroyed; a restarted logind, which knows nothing of the old lock, is asked
// for it again.
class LogindInhibition final : public SleepInhibition {
  public:
    LogindInhibition(std::shared_ptr<LogindClient> logind, InhibitorLock lock, QString reason)
        : logind_(std::move(logind)), lock_(std::move(lock)), reason_(std::move(reason)) {
        onReturn_ = logind_->onReturn([this] {
            lock_.release();
            lock_ = logind_->inhibit(QStringLiteral("idle"), reason_);
        });
    }
    ~LogindInhibition() override { logind_->forgetReturn(onReturn_); }
    LogindInhibition(const LogindInhibition&) = delete;
    LogindInhibition& operator=(const LogindInhibition&) = delete;

  private:
    std::shared_ptr<LogindClient> logind_;
    InhibitorLock lock_;
    QString reason_;
    LogindClient::ReturnToken onReturn_ = 0;
};

}  // namespace

LogindPower::LogindPower(std::shared_ptr<LogindClient> logind, DisplayPowerHooks displays,
                         Clock clock)
    : logind_(std::move(logind)), displays_(std::move(displays)), clock_(std::move(clock)) {}

double LogindPower::monotonicSeconds() {
    using Seconds = std::chrono::duration<double>;
    return std::chrono::duration_cast<Seconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::unique_ptr<SleepInhibition> LogindPower::inhibitIdleSleep(const std::string& reason) {
    const QString why = QString::fromStdString(reason);
    InhibitorLock lock = logind_->inhibit(QStringLiteral("idle"), why);
    if (!lock.held()) return nullptr;
    return std::make_unique<LogindInhibition>(logind_, std::move(lock), why);
}

PowerRequest LogindPower::sleepDisplays() {
    if (!displays_.sleep) return {false, "display sleep is not available"};
    const double now = clock_();
    if (now < displaysGoingDownUntil_) return {true, {}};
    // Marked before the hook runs, so a request made while it runs does nothing either.
    displaysGoingDownUntil_ = now + kDisplaySleepSeconds;
    PowerRequest request = displays_.sleep();
    if (!request.started) displaysGoingDownUntil_ = 0;
    return request;
}

PowerRequest LogindPower::sleepSystem() {
    const LogindReply reply = logind_->callManager(QStringLiteral("Suspend"), {false});
    return {reply.ok, reply.error};
}

void LogindPower::declareUserActivity(const std::string& /*reason*/) {
    // The user is back: a display sleep asked for earlier is over.
    displaysGoingDownUntil_ = 0;
    (void)logind_->callSession(QStringLiteral("SetIdleHint"), {false});
    if (displays_.wake) displays_.wake();
}

}  // namespace lumora::lx
