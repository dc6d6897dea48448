#pragma once

#include <cstdint>

#include "platform/Types.h"

namespace lumora {

// The built-in panel's backlight. Each entry point may be missing on a given machine;
// callers ask before they call. Levels are 0…1; a status of 0 means success.
class Backlight {
  public:
    virtual ~Backlight() = default;
    [[nodiscard]] virtual bool hasGet() const = 0;
    [[nodiscard]] virtual bool hasSet() const = 0;
    [[nodiscard]] virtual bool hasCanChange() const = 0;
    virtual std::int32_t get(DisplayID id, float& level) = 0;
    virtual std::int32_t set(DisplayID id, float level) = 0;
    virtual bool canChange(DisplayID id) = 0;
};

}  // namespace lumora
