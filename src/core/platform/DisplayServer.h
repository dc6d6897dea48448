#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Types.h"

namespace lumora {

// One display mode as the display server reports it.
struct PlatformMode {
    // Opaque to the core: a handle the backend hands out and takes back in setMode. It stays
    // the same for the same mode of the same display while that display is online.
    std::int32_t id = 0;
    std::int64_t width = 0;  // points (logical size)
    std::int64_t height = 0;
    std::int64_t pixelWidth = 0;
    std::int64_t pixelHeight = 0;
    double refresh = 0;  // Hz; 0 when the panel reports none
    bool usable = true;  // usable for the desktop
    friend bool operator==(const PlatformMode&, const PlatformMode&) = default;
};

// A screen of the window system: what the pointer and the on-screen display are placed on.
struct Screen {
    std::optional<DisplayID> displayID;  // absent when the screen names no display
    std::string localizedName;
    Rect frame;  // global coordinates, same space as display bounds
};

// Status codes of configuration calls; 0 is success.
using ConfigStatus = std::int32_t;
inline constexpr ConfigStatus kConfigOK = 0;
// Returned by calls the platform cannot carry out at all (no way to switch a display off,
// no gamma ramps, no main-display flag).
inline constexpr ConfigStatus kConfigUnavailable = 1000;
// Returned for an identifier or mode the server does not know.
inline constexpr ConfigStatus kConfigIllegalArgument = 1001;

enum class ConfigureOption {
    forSession,   // undone when the user logs out
    permanently,  // stored by the display server
};

// One display-configuration transaction: queue changes, then complete or cancel. Each call
// returns at once with whether the change could be queued; complete() applies them together.
class DisplayConfiguration {
  public:
    virtual ~DisplayConfiguration() = default;
    virtual ConfigStatus setMode(DisplayID id, std::int32_t modeID) = 0;
    virtual ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) = 0;
    // Makes id the main display: the one with the menu bar or the primary flag. Platforms
    // whose main display is the one at the origin (macOS, the sim) move every origin here.
    virtual ConfigStatus setMain(DisplayID id) = 0;
    // target 0 ends the mirroring of id.
    virtual ConfigStatus setMirror(DisplayID id, DisplayID target) = 0;
    virtual ConfigStatus setEnabled(DisplayID id, bool enabled) = 0;
    virtual ConfigStatus complete(ConfigureOption option) = 0;
    virtual void cancel() = 0;
};

// What changed for one display. The backend merges its own begin/end phases and delivers
// only the outcome.
enum class DisplayChange {
    added,    // came online (plugged in, switched on, created)
    removed,  // went offline
    changed,  // mode, origin, mirroring, main display or anything else visible
};

using ReconfigurationHandler = std::function<void(DisplayID, DisplayChange)>;

// Red, green and blue transfer curves of one display, 0…1, each of the display's ramp size.
struct GammaRamps {
    std::vector<float> red;
    std::vector<float> green;
    std::vector<float> blue;
};

// The window system's view of the displays: facts, configuration, gamma, events.
//
// Threading: every call on the main thread only (Xlib and D-Bus connections are not shared
// across threads). Reconfiguration handlers may be called on any thread; they must only hand
// the event to the main queue. Queries about a display that is not online answer with
// zeros / nothing.
class DisplayServer {
  public:
    virtual ~DisplayServer() = default;

    // At most 32 identifiers, in the server's order; empty when the query fails.
    [[nodiscard]] virtual std::vector<DisplayID> onlineIDs() const = 0;
    // 0 when there is none.
    [[nodiscard]] virtual DisplayID mainDisplay() const = 0;
    [[nodiscard]] virtual bool isBuiltin(DisplayID id) const = 0;
    [[nodiscard]] virtual bool isAsleep(DisplayID id) const = 0;
    // EDID vendor, product and serial numbers; 0 when unknown.
    [[nodiscard]] virtual std::uint32_t vendor(DisplayID id) const = 0;
    [[nodiscard]] virtual std::uint32_t model(DisplayID id) const = 0;
    [[nodiscard]] virtual std::uint32_t serial(DisplayID id) const = 0;
    // A key for what is stored per display that survives reconnection, reboots and other
    // ports. The default joins vendor, model and serial in decimal with hyphens.
    [[nodiscard]] virtual std::string persistentKey(DisplayID id) const;
    [[nodiscard]] virtual double rotation(DisplayID id) const = 0;
    [[nodiscard]] virtual Rect bounds(DisplayID id) const = 0;
    // Millimetres; zero when unknown.
    [[nodiscard]] virtual Size physicalSize(DisplayID id) const = 0;
    [[nodiscard]] virtual std::optional<PlatformMode> currentMode(DisplayID id) const = 0;
    // Every mode including the low-resolution duplicates of HiDPI sizes and unusable ones.
    [[nodiscard]] virtual std::vector<PlatformMode> allModes(DisplayID id) const = 0;
    // The display that id mirrors, or 0.
    [[nodiscard]] virtual DisplayID mirrorSource(DisplayID id) const = 0;

    // Nothing when a transaction cannot begin.
    virtual std::unique_ptr<DisplayConfiguration> beginConfiguration() = 0;

    // Entries of each gamma ramp of the display; 0 when its gamma cannot be set.
    [[nodiscard]] virtual std::size_t gammaRampSize(DisplayID id) const = 0;
    // Loads ramps of exactly gammaRampSize(id) entries.
    virtual ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) = 0;
    // Gives the display its own colour (profile or identity) back.
    virtual void resetGamma(DisplayID id) = 0;

    [[nodiscard]] virtual std::vector<Screen> screens() const = 0;
    // Global coordinates of the pointer; nothing where the platform does not tell (Wayland).
    [[nodiscard]] virtual std::optional<Point> pointerLocation() const = 0;

    // Handlers stay registered until removed; the returned number identifies the registration.
    virtual int addReconfigurationHandler(ReconfigurationHandler handler) = 0;
    virtual void removeReconfigurationHandler(int registration) = 0;
};

}  // namespace lumora
