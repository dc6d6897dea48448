#pragma once

#include <optional>

#include "x11/RandrWorld.h"
#include "x11/XConnection.h"

namespace lumora::lx {

// Reads the screen's outputs, CRTCs, modes, primary output and EDIDs from the server. Nothing
// when the server does not answer; an output or CRTC that vanishes meanwhile is left out.
[[nodiscard]] std::optional<RandrWorld> readRandrWorld(const XConnection& connection);

}  // namespace lumora::lx
