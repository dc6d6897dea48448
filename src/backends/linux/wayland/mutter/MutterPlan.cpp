#include "wayland/mutter/MutterPlan.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace lumora::wl {

namespace {

class Planner {
  public:
    explicit Planner(const MutterState& state) : state_(state) {
        for (const auto& lm : state.logicalMonitors) {
            MutterLogicalPlan plan{lm.x, lm.y, lm.scale, lm.transform, lm.primary, {}};
            for (const auto& connector : lm.connectors) {
                const MutterMonitor* monitor = state.monitor(connector);
                if (!monitor) continue;
                const MutterMode* mode = monitor->currentMode();
                if (!mode) mode = monitor->preferredMode();
                if (mode) plan.monitors.push_back({connector, mode->id});
            }
            if (!plan.monitors.empty()) plans_.push_back(std::move(plan));
        }
    }

    void switchOff(const std::string& connector) { takeOut(connector); }

    void switchOn(const std::string& connector, const MutterPlacement* placement) {
        if (find(connector) != nullptr) return;
        const MutterMonitor* monitor = state_.monitor(connector);
        if (!monitor) return;
        if (placement && monitor->mode(placement->modeId)) {
            MutterLogicalPlan plan{placement->x,         placement->y, placement->scale,
                                   placement->transform, false,        {}};
            plan.monitors.push_back({connector, placement->modeId});
            if (!overlapsAny(plan)) {
                plans_.push_back(std::move(plan));
                return;
            }
        }
        const MutterMode* mode = monitor->preferredMode();
        if (!mode) return;
        addAtRight(connector, *mode);
    }

    bool mirror(const std::string& connector, const std::string& target, std::string& problem) {
        if (target.empty()) {
            MutterLogicalPlan* plan = find(connector);
            if (!plan || plan->monitors.size() < 2) return true;
            const std::string modeId = assignment(*plan, connector)->modeId;
            takeOut(connector);
            addAtRight(connector, *state_.monitor(connector)->mode(modeId));
            return true;
        }
        MutterLogicalPlan* group = find(target);
        const MutterMonitor* monitor = state_.monitor(connector);
        if (!group || !monitor) {
            problem = "cannot mirror " + connector + " onto " + target + ", which is off";
            return false;
        }
        const MutterMode* targetMode =
            state_.monitor(target)->mode(assignment(*group, target)->modeId);
        const MutterMode* match = matchingMode(*monitor, *targetMode);
        if (!match) {
            problem = connector + " has no mode of " + target + "'s size";
            return false;
        }
        if (group == find(connector)) return true;
        const std::string targetConnector = target;
        takeOut(connector);
        find(targetConnector)->monitors.push_back({connector, match->id});
        return true;
    }

    // The logical monitors right of or below the resized one move along with its edge, so that
    // neighbours stay adjacent.
    void setMode(const std::string& connector, const std::string& modeId) {
        MutterLogicalPlan* plan = find(connector);
        if (!plan) return;
        const LayoutSize before = size(*plan);
        assignment(*plan, connector)->modeId = modeId;
        // Mirrored monitors must keep one size: the others follow where they can.
        const MutterMode* chosen = state_.monitor(connector)->mode(modeId);
        for (auto& other : plan->monitors) {
            if (other.connector == connector || !chosen) continue;
            if (const MutterMode* match = matchingMode(*state_.monitor(other.connector), *chosen))
                other.modeId = match->id;
        }
        const LayoutSize after = size(*plan);
        const std::int32_t right = plan->x + before.width;
        const std::int32_t bottom = plan->y + before.height;
        for (auto& other : plans_) {
            if (&other == plan) continue;
            if (other.x >= right) other.x += after.width - before.width;
            if (other.y >= bottom) other.y += after.height - before.height;
        }
    }

    void setOrigin(const std::string& connector, std::int32_t x, std::int32_t y) {
        if (MutterLogicalPlan* plan = find(connector)) {
            plan->x = x;
            plan->y = y;
        }
    }

    void setMain(const std::string& connector) {
        const MutterLogicalPlan* main = find(connector);
        if (!main) return;
        for (auto& plan : plans_)
            plan.primary = &plan == main;
    }

    std::vector<MutterLogicalPlan> finish() {
        if (plans_.empty()) return {};
        std::int32_t minX = INT32_MAX;
        std::int32_t minY = INT32_MAX;
        int primaries = 0;
        for (const auto& plan : plans_) {
            minX = std::min(minX, plan.x);
            minY = std::min(minY, plan.y);
            primaries += plan.primary ? 1 : 0;
        }
        for (auto& plan : plans_) {
            plan.x -= minX;
            plan.y -= minY;
        }
        if (primaries != 1) {
            for (auto& plan : plans_)
                plan.primary = &plan == &plans_.front();
        }
        return plans_;
    }

  private:
    MutterLogicalPlan* find(const std::string& connector) {
        for (auto& plan : plans_) {
            if (assignment(plan, connector)) return &plan;
        }
        return nullptr;
    }

    static MutterAssignment* assignment(MutterLogicalPlan& plan, const std::string& connector) {
        for (auto& a : plan.monitors) {
            if (a.connector == connector) return &a;
        }
        return nullptr;
    }

    LayoutSize size(const MutterLogicalPlan& plan) const {
        const MutterAssignment& first = plan.monitors.front();
        const MutterMode* mode = state_.monitor(first.connector)->mode(first.modeId);
        return mode ? layoutSize(*mode, plan.scale, plan.transform, state_.layout) : LayoutSize{};
    }

    // A mode of the same pixel size, the closest refresh rate first.
    static const MutterMode* matchingMode(const MutterMonitor& monitor, const MutterMode& like) {
        const MutterMode* best = nullptr;
        for (const auto& m : monitor.modes) {
            if (m.width != like.width || m.height != like.height) continue;
            if (!best ||
                std::abs(m.refresh - like.refresh) < std::abs(best->refresh - like.refresh))
                best = &m;
        }
        return best;
    }

    // Out of its logical monitor. An emptied logical monitor goes, its primary flag with it
    // (finish() gives the flag to the first one left), and those right of or below it close
    // the gap, as Mutter wants logical monitors adjacent.
    void takeOut(const std::string& connector) {
        MutterLogicalPlan* plan = find(connector);
        if (!plan) return;
        const LayoutSize gone = size(*plan);
        const std::int32_t right = plan->x + gone.width;
        const std::int32_t bottom = plan->y + gone.height;
        std::erase_if(plan->monitors,
                      [&](const MutterAssignment& a) { return a.connector == connector; });
        if (!plan->monitors.empty()) return;
        for (auto& other : plans_) {
            if (&other == plan) continue;
            if (other.x >= right) other.x -= gone.width;
            if (other.y >= bottom) other.y -= gone.height;
        }
        std::erase_if(plans_, [](const MutterLogicalPlan& p) { return p.monitors.empty(); });
    }

    void addAtRight(const std::string& connector, const MutterMode& mode) {
        std::int32_t right = 0;
        std::int32_t top = plans_.empty() ? 0 : INT32_MAX;
        for (const auto& plan : plans_) {
            right = std::max(right, plan.x + size(plan).width);
            top = std::min(top, plan.y);
        }
        // A scale the mode supports: Mutter refuses any other.
        const double scale = mode.preferredScale > 0 ? mode.preferredScale : 1.0;
        MutterLogicalPlan plan{right, top, scale, 0, false, {}};
        plan.monitors.push_back({connector, mode.id});
        plans_.push_back(std::move(plan));
    }

    bool overlapsAny(const MutterLogicalPlan& candidate) const {
        const LayoutSize s = size(candidate);
        for (const auto& plan : plans_) {
            const LayoutSize o = size(plan);
            if (candidate.x < plan.x + o.width && plan.x < candidate.x + s.width &&
                candidate.y < plan.y + o.height && plan.y < candidate.y + s.height)
                return true;
        }
        return false;
    }

    const MutterState& state_;
    std::vector<MutterLogicalPlan> plans_;
};

}  // namespace

MutterPlan planMonitorsConfig(const MutterState& state, const MutterChanges& changes) {
    Planner planner(state);
    for (const auto& [connector, on] : changes.enabled) {
        if (on) {
            const auto remembered = changes.restore.find(connector);
            planner.switchOn(connector,
                             remembered == changes.restore.end() ? nullptr : &remembered->second);
        } else {
            planner.switchOff(connector);
        }
    }
    MutterPlan result;
    for (const auto& [connector, target] : changes.mirrors) {
        if (!planner.mirror(connector, target, result.problem)) return result;
    }
    for (const auto& [connector, modeId] : changes.modes)
        planner.setMode(connector, modeId);
    for (const auto& [connector, origin] : changes.origins)
        planner.setOrigin(connector, origin.first, origin.second);
    if (changes.main) planner.setMain(*changes.main);
    result.logicalMonitors = planner.finish();
    if (result.logicalMonitors.empty()) result.problem = "no monitor would stay on";
    return result;
}

}  // namespace lumora::wl
