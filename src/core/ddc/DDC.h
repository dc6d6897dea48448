#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "ddc/DDCService.h"
#include "platform/AVServices.h"
#include "platform/DisplayServer.h"
#include "platform/Scheduler.h"
#include "platform/Types.h"

namespace lumora::DDC {

// What pairing needs to know of one display, read from the display server on the main thread
// before the DDC queue runs (display servers are not shared across threads).
struct Target {
    DisplayID id = 0;
    std::uint32_t vendor = 0;
    std::uint32_t product = 0;
    std::uint32_t serial = 0;
};

// Main thread: the targets for the given displays, in order.
std::vector<Target> targets(const DisplayServer& server, const std::vector<DisplayID>& ids);

// DDC queue: opens a channel to every external monitor and pairs the channels with the
// targets: first a channel that names its display, then by EDID vendor, product and serial,
// then whatever is left in registry order. Displays without a channel are absent.
std::map<DisplayID, std::shared_ptr<DDCService>> services(AVServices& services, Sleeper& sleeper,
                                                          const std::vector<Target>& targets);

}  // namespace lumora::DDC
