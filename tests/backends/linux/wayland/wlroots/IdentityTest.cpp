#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "edid/StableDisplayID.h"
#include "wayland/common/DisplayIdentity.h"

namespace lumora::wl {
namespace {

TEST(DisplayIdentity, NumbersFromTheCompositorsTexts) {
    struct Case {
        MonitorStrings strings;
        MonitorNumbers expected;
    };
    const std::vector<Case> cases = {
        {{"DP-1", "DEL", "0xa0c4", "0x01020304"}, {0x10AC, 0xA0C4, 0x01020304}},
        {{"DP-1", "DEL", "DELL U2415", "7MT0174F1B2L"}, {0x10AC, 0, 0}},
        {{"DP-1", "Dell Inc.", "0XA0C4", "0x"}, {0, 0xA0C4, 0}},
        {{"DP-1", "del", "0xZZ", "0x1FFFFFFFF"}, {0, 0, 0}},  // lower case, not hex, too big
    };
    for (const auto& c : cases)
        EXPECT_EQ(numbersFromStrings(c.strings), c.expected) << c.strings.vendor;
}

TEST(DisplayIdentity, IdsFollowTheMonitorNotThePort) {
    const MonitorIdentity dell{std::nullopt, {"DP-1", "DEL", "DELL U2415", "ABC"}};
    MonitorIdentity dellOnHdmi = dell;
    dellOnHdmi.strings.connector = "HDMI-A-1";
    const MonitorIdentity otherDell{std::nullopt, {"DP-2", "DEL", "DELL U2415", "XYZ"}};
    const MonitorIdentity twinA{std::nullopt, {"DP-1", "headless", "headless", ""}};
    const MonitorIdentity twinB{std::nullopt, {"DP-2", "headless", "headless", ""}};
    const MonitorIdentity bare{std::nullopt, {"eDP-1", "", "", ""}};
    const lx::EdidInfo edid{.vendor = 0x10AC, .product = 0xA0C4, .serial = 7, .name = "DELL U2415"};
    const MonitorIdentity withEdid{edid, {"DP-3", "DEL", "x", "y"}};
    MonitorIdentity sameEdidOtherTexts = withEdid;
    sameEdidOtherTexts.strings = {"DP-4", "Dell Inc.", "DELL U2415", "7"};

    const auto ids = monitorDisplayIDs({dell, otherDell, twinA, twinB, bare, withEdid});
    EXPECT_EQ(monitorDisplayIDs({dellOnHdmi}).at(0), ids[0]);
    EXPECT_EQ(monitorDisplayIDs({sameEdidOtherTexts}).at(0), ids[5]);
    // With an EDID, or only a connector, the ID is the one the X11 backend gives.
    EXPECT_EQ(ids[5], lx::stableDisplayID({"DP-7", edid}));
    EXPECT_EQ(ids[4], lx::stableDisplayID({"eDP-1", std::nullopt}));
    // Every ID non-zero and distinct, the identical twins included.
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_NE(ids[i], 0u);
        for (std::size_t j = i + 1; j < ids.size(); ++j)
            EXPECT_NE(ids[i], ids[j]) << i << " and " << j;
    }
    // The first twin keeps the plain ID, so a twin alone keeps its ID when it moves.
    EXPECT_EQ(monitorDisplayIDs({twinB}).at(0), ids[2]);
}

TEST(DisplayIdentity, PersistentKeysAreNumbersOnlyWhenTheNumbersAreWhole) {
    struct Case {
        MonitorIdentity monitor;
        std::string key;
    };
    const std::vector<Case> cases = {
        {{lx::EdidInfo{.vendor = 4268, .product = 41156}, {"DP-1", "", "", ""}}, "4268-41156-0"},
        {{std::nullopt, {"DP-1", "DEL", "0xa0c4", "0x00000007"}}, "4268-41156-7"},
        {{std::nullopt, {"DP-1", "DEL", "DELL U2415", "ABC"}}, "monitor:DEL/DELL U2415/ABC"},
        {{std::nullopt, {"eDP-1", "", "", ""}}, "connector:eDP-1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(persistentKeyOf(c.monitor), c.key);
}

TEST(DisplayIdentity, AConnectedMonitorKeepsItsIdWhenATwinArrives) {
    const MonitorIdentity twinA{std::nullopt, {"HEADLESS-1", "headless", "headless", ""}};
    const MonitorIdentity twinB{std::nullopt, {"HEADLESS-2", "headless", "headless", ""}};
    DisplayIDs ids;
    const auto alone = ids.assign({twinA});
    const auto both = ids.assign({twinA, twinB});
    EXPECT_EQ(both[0], alone[0]);
    EXPECT_NE(both[1], both[0]);
    EXPECT_NE(both[1], 0u);
    EXPECT_EQ(ids.assign({twinB, twinA}), (std::vector<DisplayID>{both[1], both[0]}));
    // A new server (the next login) starts from the texts and connectors alone.
    DisplayIDs fresh;
    EXPECT_EQ(fresh.assign({twinA, twinB}), monitorDisplayIDs({twinA, twinB}));
}

}  // namespace
}  // namespace lumora::wl
