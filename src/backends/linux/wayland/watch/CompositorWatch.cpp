#include "watch/CompositorWatch.h"

#include <wayland-client-core.h>

namespace lumora::wl {

std::unique_ptr<CompositorWatch> CompositorWatch::connect(const std::string& name) {
    wl_display* display = wl_display_connect(name.empty() ? nullptr : name.c_str());
    if (display == nullptr) return nullptr;
    return std::unique_ptr<CompositorWatch>(new CompositorWatch(display));
}

CompositorWatch::~CompositorWatch() {
    wl_display_disconnect(display_);
}

int CompositorWatch::fd() const {
    return wl_display_get_fd(display_);
}

// Only called when the socket is readable, so the read inside does not wait.
bool CompositorWatch::alive() {
    return wl_display_get_error(display_) == 0 && wl_display_dispatch(display_) >= 0;
}

}  // namespace lumora::wl
