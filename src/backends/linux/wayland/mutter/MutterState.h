#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lumora::wl {

// org.gnome.Mutter.DisplayConfig's picture of the displays, as GetCurrentState gives it.
struct MutterMode {
    std::string id;          // Mutter's own key, e.g. "1920x1080@60.000"
    std::int32_t width = 0;  // pixels
    std::int32_t height = 0;
    double refresh = 0;
    double preferredScale = 1;
    std::vector<double> scales;
    bool current = false;
    bool preferred = false;
};

struct MutterMonitor {
    std::string connector;
    std::string vendor;
    std::string product;
    std::string serial;
    std::vector<MutterMode> modes;
    bool builtin = false;
    std::string displayName;
    std::int32_t widthMm = 0;
    std::int32_t heightMm = 0;

    [[nodiscard]] const MutterMode* currentMode() const;
    [[nodiscard]] const MutterMode* preferredMode() const;
    [[nodiscard]] const MutterMode* mode(const std::string& id) const;
};

struct MutterLogicalMonitor {
    std::int32_t x = 0;
    std::int32_t y = 0;
    double scale = 1;
    std::uint32_t transform = 0;  // wl_output transform: 0-3 rotations, 4-7 flipped
    bool primary = false;
    std::vector<std::string> connectors;  // more than one: they mirror each other
};

// Positions and sizes in the layout: logical (pixels divided by scale) or physical pixels.
enum class MutterLayout : std::uint32_t { logical = 1, physical = 2 };

struct MutterState {
    std::uint32_t serial = 0;
    std::vector<MutterMonitor> monitors;  // every connected monitor, also those switched off
    std::vector<MutterLogicalMonitor> logicalMonitors;
    MutterLayout layout = MutterLayout::logical;

    [[nodiscard]] const MutterMonitor* monitor(const std::string& connector) const;
    // Nothing when the monitor is switched off.
    [[nodiscard]] const MutterLogicalMonitor* logicalMonitorOf(const std::string& connector) const;
};

// Size of a logical monitor in layout coordinates: its first monitor's mode, turned by the
// transform and divided by the scale in the logical layout.
struct LayoutSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};
LayoutSize layoutSize(const MutterMode& mode, double scale, std::uint32_t transform,
                      MutterLayout layout);

// One CRTC of GetResources with the output on it, for gamma.
struct MutterCrtc {
    std::uint32_t id = 0;
    std::string connector;  // of the output driven by it
};

struct MutterResources {
    std::uint32_t serial = 0;
    std::vector<MutterCrtc> crtcs;
    std::map<std::string, std::vector<std::uint8_t>> edids;  // by connector, where given
};

}  // namespace lumora::wl
