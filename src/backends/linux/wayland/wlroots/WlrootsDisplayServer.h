#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/DisplayServer.h"
#include "wayland/common/WaylandCommon.h"

namespace lumora::wl {

struct WlrootsState;

// The displays of a wlroots compositor (sway, river, labwc, ...): outputs, modes and positions
// through zwlr_output_manager_v1, gamma ramps through zwlr_gamma_control_manager_v1.
//
// The compositor has no main display and no mirroring: setMain and setMirror answer
// kConfigUnavailable. A gamma control is taken on the first gamma query of an output and
// released by resetGamma, so the compositor puts its own ramps back and other tools (night
// light) can have the output while Lumora does not dim it.
class WlrootsDisplayServer final : public DisplayServer {
  public:
    // `display` is a socket name or an absolute path; empty means $WAYLAND_DISPLAY. Nothing when
    // the compositor cannot be reached or lacks the output-management protocol.
    static std::unique_ptr<WlrootsDisplayServer> connect(const std::string& display,
                                                         LogFunction log);
    ~WlrootsDisplayServer() override;

    // The application watches this descriptor and calls dispatchPending() on the main thread
    // when it is readable; changes of the outputs reach the handlers from there.
    [[nodiscard]] int connectionFd() const;
    void dispatchPending();

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override;
    [[nodiscard]] DisplayID mainDisplay() const override;
    [[nodiscard]] bool isBuiltin(DisplayID id) const override;
    [[nodiscard]] bool isAsleep(DisplayID id) const override;
    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override;
    [[nodiscard]] std::uint32_t model(DisplayID id) const override;
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override;
    [[nodiscard]] std::string persistentKey(DisplayID id) const override;
    [[nodiscard]] double rotation(DisplayID id) const override;
    [[nodiscard]] Rect bounds(DisplayID id) const override;
    [[nodiscard]] Size physicalSize(DisplayID id) const override;
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID id) const override;
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID id) const override;
    [[nodiscard]] DisplayID mirrorSource(DisplayID id) const override;

    std::unique_ptr<DisplayConfiguration> beginConfiguration() override;

    [[nodiscard]] std::size_t gammaRampSize(DisplayID id) const override;
    ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) override;
    void resetGamma(DisplayID id) override;

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Point> pointerLocation() const override { return std::nullopt; }

    int addReconfigurationHandler(ReconfigurationHandler handler) override;
    void removeReconfigurationHandler(int registration) override;

  private:
    explicit WlrootsDisplayServer(std::unique_ptr<WlrootsState> state);
    std::unique_ptr<WlrootsState> state_;
};

// The interface names the compositor at `display` advertises (empty: $WAYLAND_DISPLAY), for the
// session probe; empty when it cannot be reached.
std::vector<std::string> advertisedGlobals(const std::string& display);

}  // namespace lumora::wl
