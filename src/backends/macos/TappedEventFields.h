#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "decode/BrightnessKeyDecoder.h"

namespace lumora::mac {

// The fields the decoder needs, read through the event's AppKit form (subtype and data1 of a
// system-defined event have no public event field of their own).
TappedEvent tappedEventFields(CGEventType type, CGEventRef event);

}  // namespace lumora::mac
