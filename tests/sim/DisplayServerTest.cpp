#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

using Events = std::vector<std::pair<DisplayID, DisplayChange>>;

class DisplayServerTest : public ::testing::Test {
  protected:
    DisplayServerTest() : bench(defaultWorld()), server(bench.machine.displayServer()) {
        log.attach(server);
    }
    Bench bench;
    DisplayServer& server;
    EventLog log;
};

TEST_F(DisplayServerTest, FactsOfTheDefaultWorld) {
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
    EXPECT_EQ(server.mainDisplay(), 1u);
    EXPECT_TRUE(server.isBuiltin(1));
    EXPECT_FALSE(server.isBuiltin(2));
    EXPECT_EQ(server.vendor(2), 4268u);
    EXPECT_EQ(server.model(2), 41234u);
    EXPECT_EQ(server.serial(2), 12345u);
    EXPECT_EQ(server.bounds(2), (Rect{{1512, 0}, {2560, 1440}}));
    EXPECT_EQ(server.physicalSize(1), (Size{302, 196}));
    EXPECT_EQ(server.currentMode(1), (PlatformMode{10, 1512, 982, 3024, 1964, 120, true}));
    const auto modes = server.allModes(2);
    ASSERT_EQ(modes.size(), 5u);
    EXPECT_EQ(modes[4], (PlatformMode{24, 1024, 768, 1024, 768, 60, false}));
    EXPECT_EQ(server.pointerLocation(), (Point{756, 491}));
    EXPECT_EQ(server.gammaRampSize(1), 256u);
    ASSERT_EQ(server.screens().size(), 3u);
    EXPECT_EQ(server.screens()[1].displayID, 2u);
    EXPECT_EQ(server.screens()[1].localizedName, "Office Monitor");
    EXPECT_EQ(server.screens()[2].frame, (Rect{{4072, 0}, {1920, 1080}}));

    // A display the server does not list answers with nothing.
    EXPECT_EQ(server.vendor(9), 0u);
    EXPECT_EQ(server.bounds(9), Rect{});
    EXPECT_FALSE(server.currentMode(9).has_value());
    EXPECT_TRUE(server.allModes(9).empty());
}

TEST_F(DisplayServerTest, RotationTurnsTheBoundsAndNamelessScreensKeepTheirDisplay) {
    Bench rotated(worldFrom(R"({"displays": [
        {"id": 4, "rotation": 90, "modes": [{"id": 1, "width": 1920, "height": 1080}]}]})"));
    DisplayServer& s = rotated.machine.displayServer();
    EXPECT_EQ(s.rotation(4), 90.0);
    EXPECT_EQ(s.bounds(4), (Rect{{0, 0}, {1080, 1920}}));
    ASSERT_EQ(s.screens().size(), 1u);
    EXPECT_EQ(s.screens()[0].displayID, 4u);
    EXPECT_EQ(s.screens()[0].localizedName, "");
}

TEST_F(DisplayServerTest, ModeChangeAppliesAtCompletion) {
    auto config = server.beginConfiguration();
    ASSERT_TRUE(config);
    EXPECT_EQ(config->setMode(2, 22), kConfigOK);
    // Queued, not applied.
    EXPECT_EQ(server.currentMode(2)->id, 20);
    EXPECT_TRUE(log.events.empty());

    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.currentMode(2), (PlatformMode{22, 1280, 720, 2560, 1440, 60, true}));
    EXPECT_EQ(server.bounds(2), (Rect{{1512, 0}, {1280, 720}}));
    EXPECT_EQ(bench.machine.state()["displays"][1]["mode"], 22);
    EXPECT_EQ(log.events, (Events{{2, DisplayChange::changed}}));
}

TEST_F(DisplayServerTest, UnknownModeOrDisplayIsRefusedWhenQueued) {
    auto config = server.beginConfiguration();
    EXPECT_NE(config->setMode(2, 99), kConfigOK);
    EXPECT_NE(config->setMode(2, 10), kConfigOK);  // the panel's mode, not the monitor's
    EXPECT_NE(config->setMode(9, 20), kConfigOK);
    EXPECT_NE(config->setOrigin(9, 0, 0), kConfigOK);
    EXPECT_NE(config->setMirror(2, 2), kConfigOK);
    EXPECT_NE(config->setMirror(2, 9), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.currentMode(2)->id, 20);
    EXPECT_TRUE(log.events.empty());
}

TEST_F(DisplayServerTest, TheNewMainDisplayMovesToTheOriginWithEveryOther) {
    auto config = server.beginConfiguration();
    EXPECT_EQ(config->setMain(9), kConfigIllegalArgument);
    EXPECT_EQ(config->setMain(2), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.mainDisplay(), 2u);
    EXPECT_EQ(server.bounds(1).origin, (Point{-1512, 0}));
    EXPECT_EQ(server.bounds(3).origin, (Point{2560, 0}));
    EXPECT_EQ(bench.machine.state()["displays"][1]["main"], true);
    EXPECT_EQ(bench.machine.state()["displays"][0]["origin"], nlohmann::json::parse("[-1512, 0]"));
    EXPECT_EQ(log.events, (Events{{1, DisplayChange::changed},
                                  {2, DisplayChange::changed},
                                  {3, DisplayChange::changed}}));
}

TEST_F(DisplayServerTest, MirroringSharesTheSourceOriginAndScreen) {
    auto config = server.beginConfiguration();
    EXPECT_EQ(config->setMirror(3, 2), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.mirrorSource(3), 2u);
    EXPECT_EQ(server.mirrorSource(2), 0u);
    EXPECT_EQ(server.bounds(3).origin, (Point{1512, 0}));
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
    std::vector<DisplayID> screenIDs;
    for (const auto& s : server.screens())
        screenIDs.push_back(*s.displayID);
    EXPECT_EQ(screenIDs, (std::vector<DisplayID>{1, 2}));
    EXPECT_EQ(bench.machine.state()["displays"][2]["mirrorOf"], 2);
    EXPECT_EQ(log.events, (Events{{3, DisplayChange::changed}}));

    // Target 0 ends the mirroring; the display takes its own place at the right again.
    log.events.clear();
    config = server.beginConfiguration();
    EXPECT_EQ(config->setMirror(3, 0), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.mirrorSource(3), 0u);
    EXPECT_EQ(server.bounds(3).origin, (Point{4072, 0}));
    EXPECT_EQ(server.screens().size(), 3u);
    EXPECT_EQ(log.events, (Events{{3, DisplayChange::changed}}));
}

TEST_F(DisplayServerTest, DisablingLeavesTheListAndEnablingBringsItBack) {
    auto config = server.beginConfiguration();
    EXPECT_EQ(config->setEnabled(1, false), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::forSession), kConfigOK);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{2, 3}));
    EXPECT_EQ(server.mainDisplay(), 2u);  // nothing at (0,0) now: the first online display
    EXPECT_FALSE(server.isBuiltin(1));
    const auto entry = bench.machine.state()["displays"][0];
    EXPECT_EQ(entry["enabled"], false);
    EXPECT_EQ(entry["online"], true);
    EXPECT_EQ(entry["main"], false);
    EXPECT_EQ(log.events, (Events{{1, DisplayChange::removed}}));

    log.events.clear();
    config = server.beginConfiguration();
    EXPECT_EQ(config->setEnabled(1, true), kConfigOK);
    EXPECT_EQ(config->complete(ConfigureOption::forSession), kConfigOK);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
    EXPECT_EQ(server.mainDisplay(), 1u);
    EXPECT_EQ(log.events, (Events{{1, DisplayChange::added}}));
}

TEST_F(DisplayServerTest, CancelAndAbandonLeaveNothing) {
    auto config = server.beginConfiguration();
    config->setMode(2, 21);
    config->setEnabled(3, false);
    config->setOrigin(1, 100, 100);
    config->cancel();
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);

    auto abandoned = server.beginConfiguration();
    abandoned->setMode(2, 21);
    abandoned.reset();

    EXPECT_EQ(server.currentMode(2)->id, 20);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
    EXPECT_EQ(server.bounds(1).origin, (Point{0, 0}));
    EXPECT_TRUE(log.events.empty());
}

TEST_F(DisplayServerTest, WithoutDisconnectEnablingIsUnavailable) {
    World world = defaultWorld();
    world.disconnect = false;
    Bench fixed(world);
    DisplayServer& s = fixed.machine.displayServer();
    EXPECT_FALSE(fixed.machine.capabilities().enableDisable);
    auto config = s.beginConfiguration();
    EXPECT_EQ(config->setEnabled(1, false), kConfigUnavailable);
    EXPECT_EQ(config->complete(ConfigureOption::forSession), kConfigOK);
    EXPECT_EQ(s.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
}

TEST_F(DisplayServerTest, PlugAndUnplugAnnounceThemselves) {
    bench.machine.setOnline(2, false);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 3}));
    EXPECT_EQ(bench.machine.state()["displays"][1]["online"], false);
    bench.machine.setOnline(2, true);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
    // Unplugging what is already unplugged changes nothing and says nothing.
    bench.machine.setOnline(7, false);
    EXPECT_EQ(log.events, (Events{{2, DisplayChange::removed}, {2, DisplayChange::added}}));
}

TEST_F(DisplayServerTest, SleepAndPointerAreScripted) {
    bench.machine.setAsleep(1, true);
    EXPECT_TRUE(server.isAsleep(1));
    EXPECT_FALSE(server.isAsleep(2));
    bench.machine.setPointer(Point{2000, 300});
    EXPECT_EQ(server.pointerLocation(), (Point{2000, 300}));
    EXPECT_TRUE(log.events.empty());
}

TEST_F(DisplayServerTest, ApplyWorldPlugsUnplugsAndMovesThePointer) {
    World next = defaultWorld();
    next.displays[2].online = false;  // the projector is unplugged
    next.cursor = Point{100, 100};
    WorldDisplay fresh;
    fresh.id = 8;
    fresh.name = "Guest Monitor";
    fresh.modes = {WorldMode{80, 1280, 1024, 1280, 1024, 75, true}};
    fresh.origin = Point{0, -1024};
    next.displays.push_back(fresh);

    bench.machine.applyWorld(next);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 8}));
    EXPECT_EQ(server.pointerLocation(), (Point{100, 100}));
    EXPECT_EQ(server.bounds(8), (Rect{{0, -1024}, {1280, 1024}}));
    EXPECT_EQ(log.events, (Events{{3, DisplayChange::removed}, {8, DisplayChange::added}}));

    // A display left out of the next world has been unplugged.
    log.events.clear();
    World fewer = defaultWorld();
    fewer.displays.erase(fewer.displays.begin() + 1);
    bench.machine.applyWorld(fewer);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 3}));
    EXPECT_EQ(log.events, (Events{{2, DisplayChange::removed},
                                  {3, DisplayChange::added},
                                  {8, DisplayChange::removed}}));
}

TEST_F(DisplayServerTest, HandlersMayCallBackAndCanBeRemoved) {
    std::vector<std::vector<DisplayID>> seen;
    const int registration = server.addReconfigurationHandler(
        [&](DisplayID, DisplayChange) { seen.push_back(server.onlineIDs()); });
    bench.machine.setOnline(3, false);
    EXPECT_EQ(seen, (std::vector<std::vector<DisplayID>>{{1, 2}}));
    server.removeReconfigurationHandler(registration);
    bench.machine.setOnline(3, true);
    EXPECT_EQ(seen.size(), 1u);
    EXPECT_EQ(log.events.size(), 2u);
}

}  // namespace
}  // namespace lumora::sim::test
