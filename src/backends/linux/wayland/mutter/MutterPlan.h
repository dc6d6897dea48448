#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "wayland/mutter/MutterState.h"

namespace lumora::wl {

// Where a monitor was before Lumora switched it off, so that switching it on puts it back.
struct MutterPlacement {
    std::int32_t x = 0;
    std::int32_t y = 0;
    double scale = 1;
    std::uint32_t transform = 0;
    std::string modeId;
};

// The queued changes of one configuration, by connector.
struct MutterChanges {
    std::map<std::string, std::string> modes;  // connector → mode id
    std::map<std::string, std::pair<std::int32_t, std::int32_t>> origins;
    std::optional<std::string> main;
    std::vector<std::pair<std::string, std::string>> mirrors;  // connector, target; "" ends it
    std::map<std::string, bool> enabled;
    std::map<std::string, MutterPlacement> restore;

    [[nodiscard]] bool empty() const {
        return modes.empty() && origins.empty() && !main && mirrors.empty() && enabled.empty();
    }
};

// ApplyMonitorsConfig's logical monitors.
struct MutterAssignment {
    std::string connector;
    std::string modeId;
    friend bool operator==(const MutterAssignment&, const MutterAssignment&) = default;
};

struct MutterLogicalPlan {
    std::int32_t x = 0;
    std::int32_t y = 0;
    double scale = 1;
    std::uint32_t transform = 0;
    bool primary = false;
    std::vector<MutterAssignment> monitors;
    friend bool operator==(const MutterLogicalPlan&, const MutterLogicalPlan&) = default;
};

struct MutterPlan {
    std::vector<MutterLogicalPlan> logicalMonitors;
    std::string problem;  // why there is no plan; empty when there is one
};

// The complete configuration Mutter needs for the current state with the changes made: every
// monitor that stays on keeps its mode, place and scale unless a change says otherwise; a
// switched-off monitor is left out; mirrored monitors share one logical monitor; exactly one
// logical monitor is primary and the layout starts at (0, 0), as Mutter demands.
MutterPlan planMonitorsConfig(const MutterState& state, const MutterChanges& changes);

}  // namespace lumora::wl
