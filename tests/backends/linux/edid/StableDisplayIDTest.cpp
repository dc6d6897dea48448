#include "edid/StableDisplayID.h"

#include <gtest/gtest.h>

#include <set>

namespace lumora::lx {
namespace {

OutputIdentity monitor(std::string connector, std::uint32_t serial,
                       std::optional<std::string> serialText = std::nullopt) {
    return {std::move(connector), EdidInfo{0x10AC, 0xA0C3, serial, "DELL", serialText, 600, 340}};
}

OutputIdentity bare(std::string connector) {
    return {std::move(connector), std::nullopt};
}

TEST(StableDisplayID, FollowsTheMonitorNotThePort) {
    EXPECT_EQ(stableDisplayID(monitor("DP-1", 77)), stableDisplayID(monitor("HDMI-A-1", 77)));
    EXPECT_NE(stableDisplayID(monitor("DP-1", 77)), stableDisplayID(monitor("DP-1", 78)));
    EXPECT_NE(stableDisplayID(monitor("DP-1", 0, "A1")), stableDisplayID(monitor("DP-1", 0, "A2")))
        << "the serial descriptor counts when the number is missing";
    EXPECT_NE(stableDisplayID(bare("eDP-1")), stableDisplayID(bare("DP-1")));
    EXPECT_NE(stableDisplayID(bare("DP-1")), stableDisplayID(monitor("DP-1", 0)));
}

TEST(StableDisplayID, MachineOutputsNeverShareAnIdentifier) {
    ASSERT_EQ(stableDisplayID(bare("DP-112789")), stableDisplayID(bare("DP-349192")))
        << "the collision case below needs two connectors whose plain identifiers collide";
    const struct {
        const char* what;
        std::vector<OutputIdentity> outputs;
    } cases[] = {
        {"twins with equal serials", {monitor("DP-1", 5), monitor("DP-2", 5), monitor("DP-3", 5)}},
        {"connectors whose plain hashes collide", {bare("DP-112789"), bare("DP-349192")}},
        {"mixed", {bare("eDP-1"), monitor("DP-1", 0), monitor("DP-2", 0), bare("VGA-1")}},
    };
    for (const auto& c : cases) {
        const std::vector<DisplayID> ids = stableDisplayIDs(c.outputs);
        ASSERT_EQ(ids.size(), c.outputs.size()) << c.what;
        EXPECT_EQ(std::set<DisplayID>(ids.begin(), ids.end()).size(), ids.size()) << c.what;
        EXPECT_FALSE(std::set<DisplayID>(ids.begin(), ids.end()).contains(0)) << c.what;
        // The first of each identity keeps the identifier it has alone.
        EXPECT_EQ(ids[0], stableDisplayID(c.outputs[0])) << c.what;
    }
    // The twin on the second port gets an identifier of its own.
    const std::vector<OutputIdentity> twins = {monitor("DP-1", 5), monitor("DP-2", 5)};
    EXPECT_NE(stableDisplayIDs(twins)[1], stableDisplayID(twins[1]));
}

}  // namespace
}  // namespace lumora::lx
