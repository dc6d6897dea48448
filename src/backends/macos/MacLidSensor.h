#pragma once

#include <IOKit/hid/IOHIDManager.h>

#include "CFRef.h"
#include "platform/LidSensor.h"

namespace lumora::mac {

// The hinge-angle sensor through the HID manager, scheduled on the main run loop.
class MacLidSensor final : public LidSensor {
  public:
    MacLidSensor() = default;
    ~MacLidSensor() override;
    MacLidSensor(const MacLidSensor&) = delete;
    MacLidSensor& operator=(const MacLidSensor&) = delete;

    std::optional<std::int32_t> open(ChangeHandler onChange) override;
    LidReading read(bool fresh) override;

    // Whether a lid-angle sensor device is present, without opening it.
    static bool present();

  private:
    static void onValue(void* context, IOReturn result, void* sender, IOHIDValueRef value);

    CFRef<IOHIDManagerRef> manager_;
    ChangeHandler onChange_;
    bool scheduled_ = false;
};

}  // namespace lumora::mac
