#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "CFRef.h"
#include "platform/Input.h"

namespace lumora::mac {

// The session-level tap that sees the system-defined events carrying the brightness keys.
class MacKeyTap {
  public:
    MacKeyTap() = default;
    ~MacKeyTap();
    MacKeyTap(const MacKeyTap&) = delete;
    MacKeyTap& operator=(const MacKeyTap&) = delete;

    bool start(Input::TapHandler handler);
    void enable(bool enabled);
    void stop();

  private:
    static CGEventRef onEvent(CGEventTapProxy proxy, CGEventType type, CGEventRef event,
                              void* userInfo);

    CFRef<CFMachPortRef> tap_;
    CFRef<CFRunLoopSourceRef> source_;
    Input::TapHandler handler_;
};

}  // namespace lumora::mac
