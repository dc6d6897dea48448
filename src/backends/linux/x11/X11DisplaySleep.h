#pragma once

#include <memory>
#include <string>

#include "platform/Power.h"

namespace lumora::lx {

class XConnection;

// Display sleep through DPMS, on a connection of its own.
class X11DisplaySleep {
  public:
    // Nothing when the server cannot be reached. Empty name: $DISPLAY.
    static std::unique_ptr<X11DisplaySleep> open(const std::string& displayName);
    ~X11DisplaySleep();

    // Whether the server has DPMS and its monitors can use it.
    [[nodiscard]] bool available() const;
    // Switches the monitors off now (turning DPMS on if it was off).
    PowerRequest sleepNow();
    // User activity: monitors on and the screen saver's idle time back to zero. The screen
    // saver part works without DPMS too.
    void wake();

  private:
    explicit X11DisplaySleep(std::unique_ptr<XConnection> connection);

    std::unique_ptr<XConnection> connection_;
    bool available_ = false;
};

}  // namespace lumora::lx
