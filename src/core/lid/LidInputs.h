#pragma once

#include <cstdint>
#include <optional>

namespace lumora {

// One sample of the world, handed to the lid machine on every tick.
struct LidInputs {
    double now = 0;                     // monotonic seconds since boot: the machine's only clock
    std::optional<std::int64_t> angle;  // degrees; absent until the sensor was ever read
    std::int64_t externals = 0;         // online external displays
    bool builtinOnline = false;         // the built-in panel is online (not disabled)
    bool builtinAsleep = false;         // the built-in panel is in display sleep

    friend bool operator==(const LidInputs&, const LidInputs&) = default;
};

}  // namespace lumora
