#pragma once

#include <memory>
#include <string>

struct wl_display;

namespace lumora::wl {

// A connection to the Wayland compositor that binds nothing and exists only to learn when the
// compositor goes away (a crash, the end of the session), whichever backend drives the
// displays: Mutter's is on D-Bus and would never notice.
class CompositorWatch {
  public:
    // Nothing when the compositor cannot be reached. `name` as in WAYLAND_DISPLAY.
    static std::unique_ptr<CompositorWatch> connect(const std::string& name);
    ~CompositorWatch();
    CompositorWatch(const CompositorWatch&) = delete;
    CompositorWatch& operator=(const CompositorWatch&) = delete;

    // Readable when the compositor says something or hangs up.
    [[nodiscard]] int fd() const;
    // Takes in what has arrived; false once the compositor has gone.
    bool alive();

  private:
    explicit CompositorWatch(wl_display* display) : display_(display) {}
    wl_display* display_;
};

}  // namespace lumora::wl
