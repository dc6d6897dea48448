#include "wayland/mutter/MutterState.h"

#include <algorithm>
#include <cmath>

namespace lumora::wl {

const MutterMode* MutterMonitor::currentMode() const {
    for (const auto& m : modes) {
        if (m.current) return &m;
    }
    return nullptr;
}

const MutterMode* MutterMonitor::preferredMode() const {
    for (const auto& m : modes) {
        if (m.preferred) return &m;
    }
    return modes.empty() ? nullptr : &modes.front();
}

const MutterMode* MutterMonitor::mode(const std::string& id) const {
    for (const auto& m : modes) {
        if (m.id == id) return &m;
    }
    return nullptr;
}

const MutterMonitor* MutterState::monitor(const std::string& connector) const {
    for (const auto& m : monitors) {
        if (m.connector == connector) return &m;
    }
    return nullptr;
}

const MutterLogicalMonitor* MutterState::logicalMonitorOf(const std::string& connector) const {
    for (const auto& lm : logicalMonitors) {
        if (std::find(lm.connectors.begin(), lm.connectors.end(), connector) != lm.connectors.end())
            return &lm;
    }
    return nullptr;
}

LayoutSize layoutSize(const MutterMode& mode, double scale, std::uint32_t transform,
                      MutterLayout layout) {
    double width = mode.width;
    double height = mode.height;
    // Odd transforms (90° and 270°, flipped or not) stand the monitor on its side.
    if (transform % 2 == 1) std::swap(width, height);
    if (layout == MutterLayout::logical && scale > 0) {
        width /= scale;
        height /= scale;
    }
    return LayoutSize{static_cast<std::int32_t>(std::lround(width)),
                      static_cast<std::int32_t>(std::lround(height))};
}

}  // namespace lumora::wl
