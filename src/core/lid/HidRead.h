#pragma once

#include <cstdint>
#include <optional>

#include "platform/LidSensor.h"

namespace lumora {

// One integer from a sensor element. fresh: ask the device for a current value first, and
// fall back to the manager's last received value when the device does not answer. Nothing
// when no value could be read.
std::optional<std::int64_t> readHidInteger(LidSensor& sensor, const HidElement& element,
                                           bool fresh);

}  // namespace lumora
