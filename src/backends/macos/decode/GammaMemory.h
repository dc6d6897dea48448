#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <utility>
#include <vector>

#include "platform/DisplayServer.h"

namespace lumora::mac {

// The transfer tables Lumora has loaded, per display. The system restores colour profiles
// only for all displays at once, so resetting one display means loading the others' tables
// again afterwards.
class GammaMemory {
  public:
    // Whether the ramps are complete tables of the display's size (a ramp of another size
    // would make the system read past it or leave entries undefined).
    [[nodiscard]] static bool fits(const GammaRamps& ramps, std::size_t rampSize);

    void remember(DisplayID id, GammaRamps ramps);
    void forget(DisplayID id);
    // Drops the tables of displays that are no longer online: a display that returns starts
    // with its profile.
    void keepOnly(std::span<const DisplayID> online);
    // Every remembered table except those of `id`, in display order.
    [[nodiscard]] std::vector<std::pair<DisplayID, GammaRamps>> others(DisplayID id) const;

  private:
    std::map<DisplayID, GammaRamps> tables_;
};

}  // namespace lumora::mac
