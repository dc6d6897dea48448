#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "CFRef.h"
#include "decode/ModeFields.h"

namespace lumora::mac {

// Every mode of a display, the low-resolution duplicates of HiDPI sizes included; empty
// (no array) when the display is unknown.
CFRef<CFArrayRef> copyAllModes(CGDirectDisplayID id);
// The number of modes in such an array and the one at an index (not retained).
CFIndex modeCount(const CFRef<CFArrayRef>& modes);
CGDisplayModeRef modeAt(const CFRef<CFArrayRef>& modes, CFIndex index);

RawModeFields rawFields(CGDisplayModeRef mode);

}  // namespace lumora::mac
