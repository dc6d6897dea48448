#include "x11/XConnection.h"

#include <set>

namespace lumora::lx {

namespace {

thread_local ErrorTrap* innermost = nullptr;

// Xlib's process-wide handler for lost connections prints and exits before the connection's
// own exit handler is asked. For our connections it stays quiet and returns; the others get
// the handler that was there before.
std::set<Display*>& ourDisplays() {
    static std::set<Display*> displays;
    return displays;
}
XIOErrorHandler previousIOHandler = nullptr;

int onIOError(Display* display) {
    if (ourDisplays().contains(display)) return 0;
    return previousIOHandler ? previousIOHandler(display) : 0;
}

}  // namespace

std::unique_ptr<XConnection> XConnection::open(const std::string& displayName) {
    Display* display = XOpenDisplay(displayName.empty() ? nullptr : displayName.c_str());
    if (!display) return nullptr;
    return std::unique_ptr<XConnection>(new XConnection(display));
}

XConnection::XConnection(Display* display) : display_(display) {
    static const bool installed = [] {
        previousIOHandler = XSetIOErrorHandler(&onIOError);
        return true;
    }();
    (void)installed;
    ourDisplays().insert(display_);
    XSetIOErrorExitHandler(display_, &XConnection::onLost, this);
}

XConnection::~XConnection() {
    XCloseDisplay(display_);
    ourDisplays().erase(display_);
}

// Returning from here leaves the connection marked dead inside Xlib rather than exiting.
void XConnection::onLost(Display* /*display*/, void* self) {
    static_cast<XConnection*>(self)->lost_ = true;
}

ErrorTrap::ErrorTrap(const XConnection& connection)
    : connection_(connection), outer_(innermost), previous_(XSetErrorHandler(&ErrorTrap::handle)) {
    innermost = this;
}

ErrorTrap::~ErrorTrap() {
    // Errors of requests still in flight must arrive while the trap is in place.
    sync();
    innermost = outer_;
    XSetErrorHandler(previous_);
}

int ErrorTrap::sync() {
    constexpr int kLostConnection = BadImplementation;
    if (!connection_.lost()) XSync(connection_.display(), False);
    if (connection_.lost() && error_ == 0) error_ = kLostConnection;
    return error_;
}

int ErrorTrap::handle(Display* display, XErrorEvent* event) {
    for (ErrorTrap* trap = innermost; trap; trap = trap->outer_) {
        if (trap->connection_.display() != display) continue;
        if (trap->error_ == 0) trap->error_ = event->error_code;
        return 0;
    }
    ErrorTrap* outermost = innermost;
    while (outermost && outermost->outer_)
        outermost = outermost->outer_;
    if (outermost && outermost->previous_) return outermost->previous_(display, event);
    return 0;
}

}  // namespace lumora::lx
