#pragma once

#include <vector>

#include "platform/DisplayServer.h"
#include "x11/LayoutPlan.h"
#include "x11/XConnection.h"

namespace lumora::lx {

// Statuses a configuration adds to the port's own: the X error code of a refused request, or
// RandR's answer to a CRTC change, each offset so neither reads as one of the port's codes.
inline constexpr ConfigStatus kXErrorStatusBase = 2000;
inline constexpr ConfigStatus kRandrStatusBase = 3000;

// The screen as it should be after a transaction.
struct ScreenSetting {
    std::vector<CrtcSetting> crtcs;
    std::uint32_t width = 0;  // 0: keep the current size (nothing lit)
    std::uint32_t height = 0;
    XId primary = 0;
};

// Puts the CRTCs, the screen size and the primary output in place. The screen grows before the
// CRTCs change and shrinks after, so every step is a valid screen. The caller holds the server
// grab. kConfigOK, kConfigIllegalArgument for a screen beyond the server's limits, or a status
// above.
[[nodiscard]] ConfigStatus applyScreen(const XConnection& connection, const RandrWorld& before,
                                       const ScreenSetting& target);

}  // namespace lumora::lx
