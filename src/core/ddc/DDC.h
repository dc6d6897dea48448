#pragma once

#include <map>
#include <memory>
#include <vector>

#include "ddc/DDCService.h"
#include "platform/AVServices.h"
#include "platform/DisplayServer.h"
#include "platform/Scheduler.h"
#include "platform/Types.h"

namespace lumora::DDC {

// Opens a channel to every external monitor and pairs the channels with the given displays:
// first by EDID vendor, product and serial, then whatever is left in registry order.
// Displays without a channel are absent from the result.
std::map<DisplayID, std::shared_ptr<DDCService>> services(AVServices& services,
                                                          const DisplayServer& displays,
                                                          Sleeper& sleeper,
                                                          const std::vector<DisplayID>& ids);

}  // namespace lumora::DDC
