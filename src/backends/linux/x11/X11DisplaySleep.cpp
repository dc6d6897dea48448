#include "x11/X11DisplaySleep.h"

#include <X11/Xlib.h>
#include <X11/extensions/dpms.h>

#include "x11/XConnection.h"

namespace lumora::lx {

std::unique_ptr<X11DisplaySleep> X11DisplaySleep::open(const std::string& displayName) {
    auto connection = XConnection::open(displayName);
    if (!connection) return nullptr;
    return std::unique_ptr<X11DisplaySleep>(new X11DisplaySleep(std::move(connection)));
}

X11DisplaySleep::X11DisplaySleep(std::unique_ptr<XConnection> connection)
    : connection_(std::move(connection)) {
    int event = 0, error = 0;
    Display* display = connection_->display();
    available_ = DPMSQueryExtension(display, &event, &error) && DPMSCapable(display);
}

X11DisplaySleep::~X11DisplaySleep() = default;

bool X11DisplaySleep::available() const {
    return available_ && !connection_->lost();
}

PowerRequest X11DisplaySleep::sleepNow() {
    if (!available()) return {false, "x11: the display server has no DPMS"};
    Display* display = connection_->display();
    ErrorTrap trap(*connection_);
    CARD16 level = DPMSModeOn;
    BOOL enabled = False;
    // Forcing a level needs DPMS on.
    if (DPMSInfo(display, &level, &enabled) && !enabled) DPMSEnable(display);
    DPMSForceLevel(display, DPMSModeOff);
    if (const int error = trap.sync())
        return {false, "x11: DPMS refused to switch off (error " + std::to_string(error) + ")"};
    return {true, ""};
}

void X11DisplaySleep::wake() {
    if (connection_->lost()) return;
    Display* display = connection_->display();
    ErrorTrap trap(*connection_);
    XForceScreenSaver(display, ScreenSaverReset);
    if (available_) DPMSForceLevel(display, DPMSModeOn);
}

}  // namespace lumora::lx
