#include "MacPlatform.h"

namespace lumora::mac {

MacPlatform::MacPlatform() : displays_(enableSwitch_) {
    Capabilities& c = capabilities_;
    // CoreGraphics always configures, loads gamma tables and taps events.
    c.setMode = true;
    c.setMain = true;
    c.mirror = true;
    c.gamma = true;
    c.globalKeys = true;
    c.brightnessKeyTap = true;
    c.pointer = true;
    c.idleInhibit = true;
    c.enableDisable = enableSwitch_.available();
    c.virtualDisplays = virtualDisplays_.available();
    c.lidAngle = MacLidSensor::present();
    c.lidSwitch = false;  // the lid is known only through its angle
    c.backlight = backlight_.hasSet();
    c.ddc = avServices_.canCreate() && avServices_.canRead() && avServices_.canWrite();
    c.displaySleep = power_.canSleep();
    c.systemSleep = power_.canSleep();
}

std::unique_ptr<Platform> makeMacPlatform() {
    return std::make_unique<MacPlatform>();
}

}  // namespace lumora::mac
