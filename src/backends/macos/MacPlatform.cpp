#include "MacPlatform.h"

namespace lumora::mac {

MacPlatform::MacPlatform(bool applicationEvents) : displays_(enableSwitch_) {
    Capabilities& c = capabilities_;
    // CoreGraphics always configures, loads gamma tables and taps events.
    c.setMode = true;
    c.setMain = true;
    c.mirror = true;
    c.gamma = true;
    // Hot keys come through the application's event loop, which a headless agent does not
    // run; the event tap works on the bare run loop.
    c.globalKeys = applicationEvents;
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

std::unique_ptr<Platform> makeMacPlatform(bool applicationEvents) {
    return std::make_unique<MacPlatform>(applicationEvents);
}

}  // namespace lumora::mac
