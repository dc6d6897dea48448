#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace lumora {

// What the lid tells: the hinge angle where a sensor measures it, else only open or closed
// where the machine has a lid switch. Both absent: nothing known.
struct LidReading {
    std::optional<std::int64_t> angle;  // degrees
    std::optional<bool> closed;
    friend bool operator==(const LidReading&, const LidReading&) = default;
};

// The lid sensor. Threading: main thread only; the change handler runs on the main queue.
class LidSensor {
  public:
    using ChangeHandler = std::function<void(const LidReading&)>;

    virtual ~LidSensor() = default;

    // Opens the sensor. Nothing when the machine has no sensor facility at all; otherwise the
    // open status (0 = ok). After a successful open, onChange hears readings the sensor
    // reports by itself (not every change is reported). Called once.
    virtual std::optional<std::int32_t> open(ChangeHandler onChange) = 0;
    // fresh: ask the device for a current value, falling back to the last value it reported.
    // Empty reading when nothing could be read.
    virtual LidReading read(bool fresh) = 0;
};

}  // namespace lumora
