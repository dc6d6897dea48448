#pragma once

#include <memory>
#include <string>

namespace lumora {

// Keeps the system from idle sleep while it lives; destroying it lets the system sleep again.
class SleepInhibition {
  public:
    virtual ~SleepInhibition() = default;
};

// The outcome of a power request: whether it was started, and if not one line naming what
// failed and why ("/usr/bin/pmset failed: …", "logind Suspend failed: …").
struct PowerRequest {
    bool started = false;
    std::string error;
};

// Power management as intents; how a platform carries them out (power assertions and the
// power tool on macOS, logind and DPMS on Linux) is the backend's.
//
// Threading: main thread only.
class Power {
  public:
    virtual ~Power() = default;
    // Nothing when the system refuses; the caller tries again later.
    virtual std::unique_ptr<SleepInhibition> inhibitIdleSleep(const std::string& reason) = 0;
    // Puts the displays to sleep. While an earlier request is still being carried out a new
    // one does nothing and reports started: the displays are already on their way down.
    virtual PowerRequest sleepDisplays() = 0;
    virtual PowerRequest sleepSystem() = 0;
    // Tells the system the user is active (wakes the displays, resets the idle timers).
    virtual void declareUserActivity(const std::string& reason) = 0;
};

}  // namespace lumora
