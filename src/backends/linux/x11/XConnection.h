#pragma once

#include <X11/Xlib.h>

#include <memory>
#include <string>

namespace lumora::lx {

// One connection to an X server. Losing it (the server went away) marks it lost instead of
// ending the process, as Xlib would by default; every later call on it then does nothing.
class XConnection {
  public:
    // Nothing when the server cannot be reached. An empty name means $DISPLAY.
    static std::unique_ptr<XConnection> open(const std::string& displayName);
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    [[nodiscard]] Display* display() const { return display_; }
    [[nodiscard]] Window root() const { return DefaultRootWindow(display_); }
    [[nodiscard]] int fd() const { return ConnectionNumber(display_); }
    [[nodiscard]] bool lost() const { return lost_; }

  private:
    explicit XConnection(Display* display);
    static void onLost(Display* display, void* self);

    Display* display_;
    bool lost_ = false;
};

// Catches the errors of the requests made while it lives, instead of Xlib's default handler,
// which ends the process. Errors on other connections go to the handler that was there before.
// Traps nest; main thread only, like every Xlib call here.
class ErrorTrap {
  public:
    explicit ErrorTrap(const XConnection& connection);
    ~ErrorTrap();
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;

    // Waits until the server has handled every request so far; the first error code, 0 when
    // there was none. A lost connection counts as an error (BadImplementation).
    int sync();
    // The first error seen so far, without waiting.
    [[nodiscard]] int error() const { return error_; }

  private:
    static int handle(Display* display, XErrorEvent* event);

    const XConnection& connection_;
    ErrorTrap* outer_;
    XErrorHandler previous_;
    int error_ = 0;
};

// Frees what Xlib and its extensions allocate for a reply.
template <class T, auto Free>
struct XFreer {
    void operator()(T* p) const {
        if (p) Free(p);
    }
};
template <class T, auto Free>
using XReply = std::unique_ptr<T, XFreer<T, Free>>;

}  // namespace lumora::lx
