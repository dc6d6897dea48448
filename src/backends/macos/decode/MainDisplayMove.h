#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/Types.h"

namespace lumora::mac {

struct DisplayOrigin {
    DisplayID id = 0;
    Point origin;  // top-left of the display's bounds, global coordinates
};

struct OriginMove {
    DisplayID id = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    friend bool operator==(const OriginMove&, const OriginMove&) = default;
};

// The main display is the one at (0, 0): every online display moves by the new main's offset,
// so it lands at the origin and the arrangement keeps its shape. One move per display, in the
// given order. Nothing when the new main is not among them or an origin does not fit the
// configuration's 32-bit coordinates.
std::optional<std::vector<OriginMove>> originsForMain(std::span<const DisplayOrigin> displays,
                                                      DisplayID newMain);

}  // namespace lumora::mac
