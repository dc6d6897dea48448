#include "lid/HidRead.h"

namespace lumora {

std::optional<std::int64_t> readHidInteger(LidSensor& sensor, const HidElement& element,
                                           bool fresh) {
    if (fresh) {
        if (auto value = sensor.getValue(element, /*askDevice=*/true)) return value;
    }
    return sensor.getValue(element, /*askDevice=*/false);
}

}  // namespace lumora
