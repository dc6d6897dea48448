#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayServer.h"
#include "x11/DisplayWorld.h"
#include "x11/LayoutPlan.h"
#include "x11/TraceSink.h"

namespace lumora::lx {

class XConnection;

// The display server port over Xlib and XRandR, on a connection of its own.
//
// Displays are RandR outputs: a connected output is known, one with a lit CRTC is online. Its
// identifier comes from its EDID (the connector name without one). Bounds, screens, origins and
// the pointer are in the X screen's coordinates, the ones Qt windows and other X clients use:
// the main (primary) display sits at 0,0 only when it is the top-left one.
//
// Events: the owner watches connectionFd() and calls dispatchPending() on the main thread when
// it is readable. Every call that talks to the server also takes in what has arrived, so the
// handlers may hear of a change during any call; as the port requires, they only queue it.
class X11DisplayServer final : public DisplayServer {
  public:
    // Nothing when the server cannot be reached or has no RandR 1.3. Empty name: $DISPLAY.
    static std::unique_ptr<X11DisplayServer> open(const std::string& displayName,
                                                  TraceSink trace = {});
    ~X11DisplayServer() override;

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override;
    [[nodiscard]] DisplayID mainDisplay() const override;
    [[nodiscard]] bool isBuiltin(DisplayID id) const override;
    // True while DPMS has the monitors off.
    [[nodiscard]] bool isAsleep(DisplayID id) const override;
    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override;
    [[nodiscard]] std::uint32_t model(DisplayID id) const override;
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override;
    // Vendor, model and serial; the connector name for a display without EDID.
    [[nodiscard]] std::string persistentKey(DisplayID id) const override;
    [[nodiscard]] double rotation(DisplayID id) const override;
    [[nodiscard]] Rect bounds(DisplayID id) const override;
    [[nodiscard]] Size physicalSize(DisplayID id) const override;
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID id) const override;
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID id) const override;
    [[nodiscard]] DisplayID mirrorSource(DisplayID id) const override;

    // The transaction must not outlive the server; if it does, complete() reports
    // kConfigUnavailable.
    std::unique_ptr<DisplayConfiguration> beginConfiguration() override;

    [[nodiscard]] std::size_t gammaRampSize(DisplayID id) const override;
    ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) override;
    // Restores the ramps the display's CRTC had before Lumora first changed them: another tool
    // may have loaded a calibration there.
    void resetGamma(DisplayID id) override;

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Point> pointerLocation() const override;

    int addReconfigurationHandler(ReconfigurationHandler handler) override;
    void removeReconfigurationHandler(int registration) override;

    [[nodiscard]] int connectionFd() const;
    // Called once, the moment the connection is found broken (the server died), before the
    // displays are forgotten.
    void onConnectionLost(std::function<void()> handler) { lostHandler_ = std::move(handler); }
    // Takes in the events that have arrived and tells the handlers what they changed: per
    // display one added, removed or changed for the whole burst.
    void dispatchPending();
    // "RandR 1.6" and the like, for the platform's name.
    [[nodiscard]] std::string randrVersion() const;

  private:
    friend class X11Configuration;
    X11DisplayServer(std::unique_ptr<XConnection> connection, int major, int minor,
                     TraceSink trace);

    // The displays as they are now, after taking in whatever the server has sent.
    const DisplayWorld& world() const;
    const DisplayFacts* online(DisplayID id) const;
    // Reads the server again and delivers what changed; `pending` events are already queued.
    void refresh(bool force) const;
    void deliver(const DisplayWorld& before, const DisplayWorld& after) const;
    // Applies a transaction's changes; see X11Configuration. On a refusal the screen goes back
    // to how it was.
    ConfigStatus apply(const std::vector<ConfigChange>& changes);
    ConfigStatus applyGrabbed(const std::vector<ConfigChange>& changes);
    void trace(const std::string& line) const;

    std::unique_ptr<XConnection> connection_;
    int major_;
    int minor_;
    TraceSink trace_;
    mutable std::function<void()> lostHandler_;  // taken by the call that finds the loss
    bool hasDpms_ = false;
    mutable DisplayWorld world_;
    mutable LayoutMemory memory_;
    std::map<int, ReconfigurationHandler> handlers_;
    int nextRegistration_ = 1;
    // Ramps each display's CRTC had before Lumora first changed them, by display.
    struct SavedGamma {
        std::vector<std::uint16_t> red, green, blue;
    };
    std::map<DisplayID, SavedGamma> savedGamma_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace lumora::lx
