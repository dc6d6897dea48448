#pragma once

#include <optional>
#include <string>

#include "platform/Types.h"

namespace lumora {

// The on-screen level display: a small floating panel that fades by itself.
class Osd {
  public:
    virtual ~Osd() = default;
    // Main thread only. level is 0…1; symbol names a system symbol image ("sun.max.fill",
    // "moon.fill", ...); text, when given, replaces the percentage.
    virtual void show(DisplayID display, double level, const std::string& symbol,
                      const std::optional<std::string>& text) = 0;
};

}  // namespace lumora
