#pragma once

// Private to the sim backend: the port implementations over the shared machine state.

#include <memory>

#include "platform/AVServices.h"
#include "platform/AmbientLight.h"
#include "platform/Backlight.h"
#include "platform/DisplayServer.h"
#include "platform/LidSensor.h"
#include "platform/Power.h"
#include "platform/SystemEvents.h"
#include "platform/VirtualDisplays.h"
#include "platform/WallClock.h"
#include "sim/SimCore.h"

namespace lumora::sim {

std::unique_ptr<DisplayServer> makeSimDisplayServer(std::shared_ptr<SimCore> core);
std::unique_ptr<DisplayConfiguration> makeSimConfiguration(std::shared_ptr<SimCore> core);
std::unique_ptr<Backlight> makeSimBacklight(std::shared_ptr<SimCore> core);
std::unique_ptr<AVServices> makeSimAVServices(std::shared_ptr<SimCore> core);
std::unique_ptr<VirtualDisplays> makeSimVirtualDisplays(std::shared_ptr<SimCore> core);
std::unique_ptr<Power> makeSimPower(std::shared_ptr<SimCore> core);
std::unique_ptr<LidSensor> makeSimLidSensor(std::shared_ptr<SimCore> core);
std::unique_ptr<SystemEvents> makeSimSystemEvents(std::shared_ptr<SimCore> core);
std::unique_ptr<AmbientLight> makeSimAmbientLight(std::shared_ptr<SimCore> core);
std::unique_ptr<WallClock> makeSimWallClock(std::shared_ptr<SimCore> core);

// The lid as the world now has it. A changed angle is reported by an opened sensor on the
// main queue, unless `report` is false (the real sensor does not report every change).
void moveSimLid(const std::shared_ptr<SimCore>& core, const WorldLid& lid, bool report);
// Every observer of `event` hears it on the main queue.
void postSimSystemEvent(const std::shared_ptr<SimCore>& core, SystemEvent event);

}  // namespace lumora::sim
