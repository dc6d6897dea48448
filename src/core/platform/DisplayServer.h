#pragma once

#include <array>
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
    std::int32_t id = 0;  // the server's mode number
    std::int64_t width = 0;  // points
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
// Returned by enable/disable when the platform has no way to switch a display off.
inline constexpr ConfigStatus kEnableUnavailable = 1000;

enum class ConfigureOption {
    forSession,   // undone when the user logs out
    permanently,  // stored by the display server
};

// One display-configuration transaction: queue changes, then complete or cancel.
class DisplayConfiguration {
public:
    virtual ~DisplayConfiguration() = default;
    virtual ConfigStatus setMode(DisplayID id, std::int32_t modeID) = 0;
    virtual ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) = 0;
    // target 0 ends the mirroring of id.
    virtual ConfigStatus setMirror(DisplayID id, DisplayID target) = 0;
    virtual ConfigStatus setEnabled(DisplayID id, bool enabled) = 0;
    virtual ConfigStatus complete(ConfigureOption option) = 0;
    virtual void cancel() = 0;
};

// Change flags delivered with a reconfiguration event.
inline constexpr std::uint32_t kReconfigBegin = 0x1;
inline constexpr std::uint32_t kReconfigAdd = 0x10;
inline constexpr std::uint32_t kReconfigRemove = 0x20;

using ReconfigurationHandler = std::function<void(DisplayID, std::uint32_t flags)>;

inline constexpr int kGammaTableSize = 256;
struct GammaTable {
    std::array<float, kGammaTableSize> red{};
    std::array<float, kGammaTableSize> green{};
    std::array<float, kGammaTableSize> blue{};
};

// The window system's view of the displays: facts, configuration, gamma, events.
// Queries about a display that is not online answer with zeros / nothing.
class DisplayServer {
public:
    virtual ~DisplayServer() = default;

    // At most 32 identifiers, in the server's order; empty when the query fails.
    [[nodiscard]] virtual std::vector<DisplayID> onlineIDs() const = 0;
    [[nodiscard]] virtual DisplayID mainDisplay() const = 0;
    [[nodiscard]] virtual bool isBuiltin(DisplayID id) const = 0;
    [[nodiscard]] virtual bool isAsleep(DisplayID id) const = 0;
    [[nodiscard]] virtual std::uint32_t vendor(DisplayID id) const = 0;
    [[nodiscard]] virtual std::uint32_t model(DisplayID id) const = 0;
    [[nodiscard]] virtual std::uint32_t serial(DisplayID id) const = 0;
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
    // Whether switching a display off in software is possible at all.
    [[nodiscard]] virtual bool canEnableDisable() const = 0;

    // Gives every display its colour profile back.
    virtual void restoreColorProfiles() = 0;
    virtual ConfigStatus setTransferTable(DisplayID id, const GammaTable& table) = 0;

    [[nodiscard]] virtual std::vector<Screen> screens() const = 0;
    [[nodiscard]] virtual Point pointerLocation() const = 0;

    // Reconfiguration events may arrive on any thread. Handlers stay registered for the
    // life of the server; the returned number identifies the registration.
    virtual int addReconfigurationHandler(ReconfigurationHandler handler) = 0;
    virtual void removeReconfigurationHandler(int registration) = 0;
};

}  // namespace lumora
