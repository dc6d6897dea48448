#pragma once

#include <optional>

namespace lumora {

// The room's light as an ambient light sensor measures it. Main thread.
class AmbientLight {
  public:
    virtual ~AmbientLight() = default;
    // Illuminance in lux; nothing when the machine has no sensor or the reading failed.
    [[nodiscard]] virtual std::optional<double> lux() = 0;
};

}  // namespace lumora
