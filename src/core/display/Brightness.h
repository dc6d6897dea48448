#pragma once

#include <optional>

#include "platform/Backlight.h"

namespace lumora {

// The built-in panel's backlight, 0…1. Missing entry points disable it quietly.
class Brightness {
  public:
    explicit Brightness(Backlight& backlight) : backlight_(backlight) {}

    // Nothing when the level cannot be read.
    std::optional<float> builtin(DisplayID id);
    // Clamps to 0…1 (NaN counts as 0); true when the level was set.
    bool setBuiltin(DisplayID id, float level);

  private:
    Backlight& backlight_;
};

}  // namespace lumora
