#include <gtest/gtest.h>

#include "core/display/DisplayScenario.h"
#include "virtual/HiDPI.h"
#include "virtual/VirtualScreens.h"

namespace lumora {
namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;
using Configs = std::vector<VirtualScreenConfig>;

class VirtualScreensTest : public test::DisplayScenario {
  protected:
    void startScreens() {
        screens =
            std::make_unique<VirtualScreens>(*displays, machine->virtualDisplays(), defaults, log);
    }
    void store(const Configs& configs) {
        defaults.setJsonData(VirtualScreens::kStorageKey, VirtualScreenConfig::listToJson(configs));
    }
    std::optional<Configs> stored() const {
        auto data = defaults.jsonData(VirtualScreens::kStorageKey);
        if (!data) return std::nullopt;
        return VirtualScreenConfig::listFromJson(*data);
    }
    std::vector<DisplayID> liveIDs() const {
        std::vector<DisplayID> ids;
        const auto all = state();
        for (const auto& v : all["virtualDisplays"])
            ids.push_back(v["id"].get<DisplayID>());
        return ids;
    }

    std::unique_ptr<VirtualScreens> screens;
};

TEST_F(VirtualScreensTest, IdsCountUpFromTheMarkerScreensSwitchAndTheNewestIdIsReused) {
    startFixture(kMonitors);
    startScreens();
    const auto desk = screens->add("Desk", 1920, 1080, 60, false);
    const auto side = screens->add("Side", 1920, 1080, 50, true);
    EXPECT_EQ(desk, (VirtualScreenConfig{0x4C4D0001, "Desk", 1920, 1080, 60, false, true}));
    EXPECT_EQ(side.id, 0x4C4D0002u);
    EXPECT_EQ(logged(), (Lines{"virtual screen 'Desk' 1920×1080 on (display 100)",
                               "virtual screen 'Side' 1920×1080 HiDPI on (display 101)"}));
    EXPECT_EQ(state()["virtualDisplays"][1], json::parse(R"({"id": 101, "name": "Side",
                             "product": 1, "serial": 1280114690, "hiDPI": true})"));
    EXPECT_EQ(machine->displayServer().allModes(101)[1],
              (PlatformMode{2, 1680, 944, 3360, 1888, 50, true}));
    EXPECT_EQ(screens->displayID(side), 101u);
    // add saves before it starts the screen, so the set catches up at the next save.
    EXPECT_EQ(displays->virtualIDs(), (std::set<DisplayID>{100}));
    EXPECT_EQ(stored(), (Configs{desk, side}));

    logged();

    screens->setEnabled(desk.id, true);  // already live: no second display
    EXPECT_EQ(liveIDs(), (std::vector<DisplayID>{100, 101}));
    screens->setEnabled(desk.id, false);
    EXPECT_EQ(liveIDs(), (std::vector<DisplayID>{101}));
    EXPECT_FALSE(stored()->front().enabled);
    screens->setEnabled(0x4C4D0009, true);  // unknown: nothing at all
    screens->setEnabled(desk.id, true);
    EXPECT_EQ(stored(), (Configs{desk, side}));
    EXPECT_EQ(logged(), (Lines{"virtual screen 'Desk' off",
                               "virtual screen 'Desk' 1920×1080 on (display 102)"}));

    screens->remove(side.id);
    EXPECT_EQ(liveIDs(), (std::vector<DisplayID>{102}));
    EXPECT_EQ(screens->displayID(side), std::nullopt);
    EXPECT_EQ(screens->add("Third", 1280, 720, 60, false).id, 0x4C4D0002u);
    screens->remove(desk.id);
    EXPECT_EQ(screens->add("Fourth", 1280, 720, 60, false).id, 0x4C4D0003u);
    EXPECT_EQ(stored(), screens->configs());
    EXPECT_EQ(screens->configs().size(), 2u);
}

TEST_F(VirtualScreensTest, ScreensThatCannotBeCreatedAreKeptEnabledAndLogged) {
    startFixture(kMonitors);
    startScreens();
    // Sizes outside 32 bits never reach the platform; the plan refuses a flat one.
    screens->add("Wide", 0x100000000, 1080, 60, false);
    screens->add("Negative", 1920, -1080, 60, true);
    screens->add("Flat", 1920, 0, 60, false);
    EXPECT_TRUE(liveIDs().empty());
    EXPECT_EQ(stored()->size(), 3u);

    defaults.remove(VirtualScreens::kStorageKey);
    startFixture(kMonitors, /*virtualDisplays=*/false);
    startScreens();
    EXPECT_FALSE(screens->available());
    const auto desk = screens->add("Desk", 1920, 1080, 60, false);
    EXPECT_TRUE(desk.enabled);
    EXPECT_EQ(screens->displayID(desk), std::nullopt);
    EXPECT_EQ(stored(), (Configs{desk}));
    screens->startEnabled();
    EXPECT_EQ(logged(), (Lines{"virtual screen 'Wide' could not be created",
                               "virtual screen 'Negative' could not be created",
                               "virtual screen 'Flat' could not be created",
                               "virtual screen 'Desk' could not be created",
                               "virtual screen 'Desk' could not be created"}));
}

TEST_F(VirtualScreensTest, StartEnabledAndStopAll) {
    store({{0x4C4D0003, "Left", 2560, 1440, 60, false, true},
           {0x4C4D0001, "Off", 1920, 1080, 60, false, false},
           {0x4C4D0002, "Right", 1440, 900, 60, true, true}});
    startFixture(kMonitors);
    startScreens();
    EXPECT_TRUE(liveIDs().empty());  // nothing before startEnabled
    screens->startEnabled();
    EXPECT_EQ(logged(), (Lines{"virtual screen 'Left' 2560×1440 on (display 100)",
                               "virtual screen 'Right' 1440×900 HiDPI on (display 101)"}));
    EXPECT_EQ(displays->virtualIDs(), (std::set<DisplayID>{100, 101}));
    EXPECT_EQ(screens->add("Next", 800, 600, 60, false).id, 0x4C4D0004u);

    screens->stopAll();
    EXPECT_TRUE(liveIDs().empty());
    EXPECT_EQ(screens->configs().size(), 4u);
    screens->startEnabled();
    EXPECT_EQ(liveIDs().size(), 3u);

    // A stored id at the top of the range: the lowest free number of the range comes next.
    store({{0xFFFFFFFE, "Last but one", 1920, 1080, 60, false, false},
           {VirtualScreens::kFirstID, "First", 1920, 1080, 60, false, false}});
    startScreens();
    EXPECT_EQ(screens->add("Last", 1920, 1080, 60, false).id, 0xFFFFFFFFu);
    EXPECT_EQ(screens->add("Beyond", 1920, 1080, 60, false).id, VirtualScreens::kFirstID + 1);
}

TEST_F(VirtualScreensTest, UndecodableStoredListIsEmptyAndOverwritten) {
    const std::vector<json> corrupt = {
        json::binary({'n', 'o', 't', ' ', 'j', 's', 'o', 'n'}),
        json::binary({'[', '{', '"', 'i', 'd', '"', ':', '"', 'x', '"', '}', ']'}),
        json("[]"),  // a string, not data
    };
    for (const auto& value : corrupt) {
        defaults.set(VirtualScreens::kStorageKey, value);
        startFixture(kMonitors);
        startScreens();
        EXPECT_TRUE(screens->configs().empty());
        const auto desk = screens->add("Desk", 1920, 1080, 60, false);
        EXPECT_EQ(desk.id, VirtualScreens::kFirstID);
        EXPECT_EQ(stored(), (Configs{desk}));
        screens.reset();
    }
}

TEST_F(VirtualScreensTest, SavingReplacesTheVirtualIdSet) {
    startFixture(kMonitors);
    HiDPI hidpi(*displays, machine->virtualDisplays(), scheduler, defaults, log);
    startScreens();
    hidpi.enable(2);
    EXPECT_EQ(displays->virtualIDs(), (std::set<DisplayID>{100}));
    screens->add("Desk", 1920, 1080, 60, false);
    EXPECT_TRUE(displays->virtualIDs().empty());
    screens->setEnabled(VirtualScreens::kFirstID, true);
    EXPECT_EQ(displays->virtualIDs(), (std::set<DisplayID>{101}));
    // The backing display still counts as virtual through its vendor number.
    EXPECT_TRUE(displays->isVirtual(100));
}

}  // namespace
}  // namespace lumora
