#pragma once

#include <string>

#include "platform/Platform.h"
#include "sim/SimMachine.h"

namespace lumora::test {

// The simulated machine with another display server in front of it: a test double, or a real
// server (the X11 benchmark).
class ServerSwap final : public Platform {
  public:
    ServerSwap(sim::SimMachine& machine, DisplayServer& server)
        : machine_(machine), server_(server) {}
    std::string name() const override { return machine_.name(); }
    Capabilities capabilities() const override { return machine_.capabilities(); }
    DisplayServer& displayServer() override { return server_; }
    Backlight& backlight() override { return machine_.backlight(); }
    AVServices& avServices() override { return machine_.avServices(); }
    VirtualDisplays& virtualDisplays() override { return machine_.virtualDisplays(); }
    Power& power() override { return machine_.power(); }
    LidSensor& lidSensor() override { return machine_.lidSensor(); }
    SystemEvents& systemEvents() override { return machine_.systemEvents(); }
    Input& input() override { return machine_.input(); }
    AmbientLight& ambientLight() override { return machine_.ambientLight(); }
    WallClock& wallClock() override { return machine_.wallClock(); }

  private:
    sim::SimMachine& machine_;
    DisplayServer& server_;
};

}  // namespace lumora::test
