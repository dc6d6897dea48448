#pragma once

#include <signal.h>

#include <csignal>
#include <functional>
#include <iterator>
#include <memory>

class QSocketNotifier;

namespace lumora::app {

// Turns SIGTERM, SIGINT and SIGHUP into a callback on the thread that builds the bridge (the
// main thread), where the clean shutdown may do anything. The asynchronous handler only writes
// the signal's number into a pipe that the event loop watches. One bridge at a time; the
// previous handlers come back when it is destroyed.
class SignalBridge {
  public:
    using Handler = std::function<void(int signalNumber)>;

    // Installed in this order.
    static constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

    explicit SignalBridge(Handler handler);
    ~SignalBridge();
    SignalBridge(const SignalBridge&) = delete;
    SignalBridge& operator=(const SignalBridge&) = delete;

    // False when the pipe could not be made; the signals then keep their defaults.
    [[nodiscard]] bool installed() const { return installed_; }

  private:
    void drain();

    Handler handler_;
    int readEnd_ = -1;
    int writeEnd_ = -1;
    bool installed_ = false;
    struct sigaction previous_[std::size(kSignals)]{};
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace lumora::app
