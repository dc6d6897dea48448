#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "platform/DisplayServer.h"

namespace lumora::mac {

// Switching a display off and on without unplugging it: the window server's private
// configuration call, SkyLight's or else the older CoreGraphics one, bound at run time.
class DisplayEnableSwitch {
  public:
    DisplayEnableSwitch();

    [[nodiscard]] bool available() const { return configure_ != nullptr; }
    // Queues the change in an open configuration; kConfigUnavailable without an entry point.
    ConfigStatus configure(CGDisplayConfigRef config, CGDirectDisplayID id, bool enabled) const;

  private:
    using ConfigureEnabled = CGError (*)(CGDisplayConfigRef, CGDirectDisplayID, bool);
    ConfigureEnabled configure_ = nullptr;
};

}  // namespace lumora::mac
