#pragma once

#include <map>

#include "display/ColorAdjust.h"
#include "platform/DisplayServer.h"

namespace lumora {

// Software colour: dims, tints and re-contrasts displays by loading their gamma tables.
class Gamma {
  public:
    explicit Gamma(DisplayServer& server) : server_(server) {}

    // Restores every colour profile first, so a display without an adjustment (or with the
    // identity) shows its profile; then loads a table for each other display.
    void applyAll(const std::map<DisplayID, ColorAdjust>& adjustments);
    // Every display back to its colour profile.
    void resetAll();

    [[nodiscard]] static GammaTable table(const ColorAdjust& adjust);
    // The same, into an existing table.
    static void fill(const ColorAdjust& adjust, GammaTable& table);

  private:
    DisplayServer& server_;
    GammaTable scratch_;  // reused by applyAll
};

}  // namespace lumora
