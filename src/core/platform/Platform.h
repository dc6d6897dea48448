#pragma once

#include <string>

#include "platform/AVServices.h"
#include "platform/AmbientLight.h"
#include "platform/Backlight.h"
#include "platform/Capabilities.h"
#include "platform/DisplayServer.h"
#include "platform/Input.h"
#include "platform/LidSensor.h"
#include "platform/Power.h"
#include "platform/SystemEvents.h"
#include "platform/VirtualDisplays.h"
#include "platform/WallClock.h"

namespace lumora {

class Log;

// One machine's platform: every hardware and system port, what it can do, and its name. The
// application chooses one backend at start and reaches the machine only through this.
// Everything it hands out lives as long as the platform.
class Platform {
  public:
    virtual ~Platform() = default;

    // Names the backend and its parts for the listing and the log ("simulated machine",
    // "X11 (RandR 1.5), logind", ...).
    [[nodiscard]] virtual std::string name() const = 0;
    [[nodiscard]] virtual Capabilities capabilities() const = 0;

    virtual DisplayServer& displayServer() = 0;
    virtual Backlight& backlight() = 0;
    virtual AVServices& avServices() = 0;
    virtual VirtualDisplays& virtualDisplays() = 0;
    virtual Power& power() = 0;
    virtual LidSensor& lidSensor() = 0;
    virtual SystemEvents& systemEvents() = 0;
    virtual Input& input() = 0;
    virtual AmbientLight& ambientLight() = 0;
    virtual WallClock& wallClock() = 0;

    // This process has become the agent (or shows the panel): a backend that mirrors its state
    // to a file or watches its own inputs starts now. `log` outlives the platform.
    virtual void attach(Log& /*log*/) {}
    // The last step before exit: whatever the backend writes out.
    virtual void persist() {}
};

}  // namespace lumora
