#pragma once

namespace lumora {

// What this machine can do. The panel offers only these controls, and a command for one the
// machine lacks logs one line instead of failing silently.
struct Capabilities {
    bool setMode = false;
    bool setMain = false;
    bool mirror = false;
    bool enableDisable = false;  // switch a display off and on without unplugging it
    bool gamma = false;          // software dimming and colour
    bool virtualDisplays = false;
    bool globalKeys = false;  // global shortcuts
    bool brightnessKeyTap = false;
    bool pointer = false;    // "the display under the pointer"
    bool lidAngle = false;   // a hinge-angle sensor
    bool lidSwitch = false;  // only open or closed
    bool backlight = false;
    bool ddc = false;
    bool displaySleep = false;
    bool systemSleep = false;
    bool idleInhibit = false;
    bool ambientLight = false;  // a light sensor for adaptive brightness
};

}  // namespace lumora
