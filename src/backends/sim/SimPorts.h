#pragma once

// Private to the sim backend: the port implementations over the shared machine state.

#include <memory>

#include "platform/AVServices.h"
#include "platform/Backlight.h"
#include "platform/DisplayServer.h"
#include "platform/Power.h"
#include "platform/VirtualDisplays.h"
#include "sim/SimCore.h"

namespace lumora::sim {

std::unique_ptr<DisplayServer> makeSimDisplayServer(std::shared_ptr<SimCore> core);
std::unique_ptr<DisplayConfiguration> makeSimConfiguration(std::shared_ptr<SimCore> core);
std::unique_ptr<Backlight> makeSimBacklight(std::shared_ptr<SimCore> core);
std::unique_ptr<AVServices> makeSimAVServices(std::shared_ptr<SimCore> core);
std::unique_ptr<VirtualDisplays> makeSimVirtualDisplays(std::shared_ptr<SimCore> core);
std::unique_ptr<Power> makeSimPower(std::shared_ptr<SimCore> core);

}  // namespace lumora::sim
