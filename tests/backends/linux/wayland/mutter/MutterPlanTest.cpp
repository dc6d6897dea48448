#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "wayland/mutter/MutterPlan.h"

namespace lumora::wl {
namespace {

MutterMode mode(std::string id, std::int32_t w, std::int32_t h, bool current) {
    return MutterMode{std::move(id), w, h, 60.0, 1.0, {1.0}, current, current};
}

MutterMonitor monitor(std::string connector, std::vector<MutterMode> modes) {
    MutterMonitor m;
    m.connector = std::move(connector);
    m.modes = std::move(modes);
    return m;
}

// DP-1 (1920×1080, primary) at the origin, DP-2 (2560×1440, also 1920×1080) right of it,
// HDMI-1 (1280×1024 only) right of that.
MutterState threeMonitors() {
    MutterState s;
    s.serial = 5;
    s.layout = MutterLayout::physical;
    s.monitors = {monitor("DP-1", {mode("fhd", 1920, 1080, true)}),
                  monitor("DP-2", {mode("qhd", 2560, 1440, true), mode("fhd2", 1920, 1080, false)}),
                  monitor("HDMI-1", {mode("sxga", 1280, 1024, true)})};
    s.logicalMonitors = {{0, 0, 1.0, 0, true, {"DP-1"}},
                         {1920, 0, 1.0, 0, false, {"DP-2"}},
                         {4480, 0, 1.0, 0, false, {"HDMI-1"}}};
    return s;
}

}  // namespace

// Failures print the plan, not its bytes.
void PrintTo(const MutterLogicalPlan& p, std::ostream* os) {
    *os << "(" << p.x << "," << p.y << (p.primary ? " primary" : "");
    for (const auto& m : p.monitors)
        *os << " " << m.connector << ":" << m.modeId;
    *os << ")";
}

namespace {

MutterLogicalPlan plan(std::int32_t x, std::int32_t y, bool primary,
                       std::vector<MutterAssignment> monitors) {
    return MutterLogicalPlan{x, y, 1.0, 0, primary, std::move(monitors)};
}

TEST(MutterPlanTable, ChangesOnTopOfTheCurrentLayout) {
    struct Case {
        const char* name;
        MutterChanges changes;
        std::vector<MutterLogicalPlan> expected;
    };
    MutterChanges offFirst;
    offFirst.enabled["DP-1"] = false;
    MutterChanges smaller;
    smaller.modes["DP-2"] = "fhd2";
    MutterChanges mirror;
    mirror.mirrors = {{"DP-2", "DP-1"}};
    MutterChanges leftOf;
    leftOf.origins["HDMI-1"] = {-1280, 0};
    leftOf.main = "HDMI-1";
    const std::vector<Case> cases = {
        // The primary goes with it; the rest is moved back to start at x = 0.
        {"primary switched off",
         offFirst,
         {plan(0, 0, true, {{"DP-2", "qhd"}}), plan(2560, 0, false, {{"HDMI-1", "sxga"}})}},
        // The right neighbour follows the narrower edge.
        {"mode shrinks",
         smaller,
         {plan(0, 0, true, {{"DP-1", "fhd"}}), plan(1920, 0, false, {{"DP-2", "fhd2"}}),
          plan(3840, 0, false, {{"HDMI-1", "sxga"}})}},
        // DP-2 takes its mode of DP-1's size and joins DP-1's logical monitor; HDMI-1 closes
        // the gap it leaves.
        {"mirror",
         mirror,
         {plan(0, 0, true, {{"DP-1", "fhd"}, {"DP-2", "fhd2"}}),
          plan(1920, 0, false, {{"HDMI-1", "sxga"}})}},
        {"origin left of the rest, main",
         leftOf,
         {plan(1280, 0, false, {{"DP-1", "fhd"}}), plan(3200, 0, false, {{"DP-2", "qhd"}}),
          plan(0, 0, true, {{"HDMI-1", "sxga"}})}},
    };
    for (const auto& c : cases) {
        const MutterPlan result = planMonitorsConfig(threeMonitors(), c.changes);
        EXPECT_EQ(result.problem, "") << c.name;
        EXPECT_EQ(result.logicalMonitors, c.expected) << c.name;
    }
}

TEST(MutterPlanTable, SwitchingOnUsesTheRememberedPlaceWhenFree) {
    MutterState s = threeMonitors();
    s.logicalMonitors.pop_back();  // HDMI-1 is off
    s.monitors[2].modes[0].current = false;
    MutterChanges on;
    on.enabled["HDMI-1"] = true;
    on.restore["HDMI-1"] = MutterPlacement{0, 1080, 1.0, 0, "sxga"};
    EXPECT_EQ(planMonitorsConfig(s, on).logicalMonitors.back(),
              plan(0, 1080, false, {{"HDMI-1", "sxga"}}));
    // The remembered place is taken by now: it goes to the right instead.
    on.restore["HDMI-1"].y = 0;
    EXPECT_EQ(planMonitorsConfig(s, on).logicalMonitors.back(),
              plan(4480, 0, false, {{"HDMI-1", "sxga"}}));
}

TEST(MutterPlanTable, ImpossibleChangesSayWhy) {
    MutterChanges noCommonMode;
    noCommonMode.mirrors = {{"HDMI-1", "DP-1"}};
    EXPECT_EQ(planMonitorsConfig(threeMonitors(), noCommonMode).problem,
              "HDMI-1 has no mode of DP-1's size");
    MutterChanges allOff;
    allOff.enabled = {{"DP-1", false}, {"DP-2", false}, {"HDMI-1", false}};
    EXPECT_EQ(planMonitorsConfig(threeMonitors(), allOff).problem, "no monitor would stay on");
}

TEST(MutterPlanTable, LogicalLayoutDividesByScaleAndTurnsWithTransform) {
    const MutterMode m = mode("4k", 3840, 2160, true);
    EXPECT_EQ(layoutSize(m, 2.0, 0, MutterLayout::logical).width, 1920);
    EXPECT_EQ(layoutSize(m, 2.0, 1, MutterLayout::logical).width, 1080);  // 90°
    EXPECT_EQ(layoutSize(m, 2.0, 0, MutterLayout::physical).width, 3840);
}

}  // namespace
}  // namespace lumora::wl
