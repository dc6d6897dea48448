#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "wayland/mutter/MutterPlan.h"
#include "wayland/mutter/MutterState.h"

namespace lumora::wl {

// One D-Bus failure: the error's name and Mutter's message.
struct MutterError {
    std::string name;
    std::string message;
    [[nodiscard]] std::string text() const { return name + ": " + message; }
    // Mutter's answer to a configuration based on an older serial.
    [[nodiscard]] bool staleSerial() const;
};

using GammaTables = std::array<std::vector<std::uint16_t>, 3>;  // red, green, blue

// The calls of org.gnome.Mutter.DisplayConfig, decoded into plain values. Every call is
// synchronous and answers either a value or the error.
class MutterBus {
  public:
    explicit MutterBus(QDBusConnection connection);

    std::optional<MutterState> currentState(MutterError& error) const;
    std::optional<MutterResources> resources(MutterError& error) const;
    // method 1 keeps the configuration for the session, 2 stores it.
    bool applyMonitorsConfig(std::uint32_t serial, std::uint32_t method,
                             const std::vector<MutterLogicalPlan>& plan, MutterError& error);
    std::optional<GammaTables> crtcGamma(std::uint32_t serial, std::uint32_t crtc,
                                         MutterError& error) const;
    bool setCrtcGamma(std::uint32_t serial, std::uint32_t crtc, const GammaTables& tables,
                      MutterError& error);
    std::optional<std::int32_t> powerSaveMode(MutterError& error) const;
    bool setPowerSaveMode(std::int32_t mode, MutterError& error);
    [[nodiscard]] bool applyAllowed() const;

    // Calls `slot` of `receiver` (a Qt slot signature) on every MonitorsChanged.
    bool connectMonitorsChanged(QObject* receiver, const char* slot);
    // Follows DisplayConfig's owner on the bus; `present` tells whether it has one now.
    std::unique_ptr<QDBusServiceWatcher> watchOwner(std::function<void(bool present)> changed);

  private:
    QDBusConnection connection_;
};

}  // namespace lumora::wl
