#include <gtest/gtest.h>

#include <functional>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

using Events = std::vector<std::pair<DisplayID, DisplayChange>>;
constexpr auto kChanged = DisplayChange::changed;

class DisplayServerTest : public ::testing::Test {
  protected:
    DisplayServerTest() { log.attach(server); }

    // Queues the changes in one transaction, completes it, and returns the events it caused.
    Events apply(const std::function<void(DisplayConfiguration&)>& queue) {
        log.events.clear();
        auto config = server.beginConfiguration();
        queue(*config);
        EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
        return log.events;
    }
    std::vector<DisplayID> screenIDs() {
        std::vector<DisplayID> ids;
        for (const auto& s : server.screens())
            ids.push_back(*s.displayID);
        return ids;
    }

    Bench bench{defaultWorld()};
    DisplayServer& server = bench.machine.displayServer();
    EventLog log;
};

TEST_F(DisplayServerTest, GeometryScreensAndDisplaysItDoesNotList) {
    EXPECT_EQ(server.bounds(2), (Rect{{1512, 0}, {2560, 1440}}));
    EXPECT_EQ(server.pointerLocation(), (Point{756, 491})) << "the main display's centre";
    ASSERT_EQ(screenIDs(), (std::vector<DisplayID>{1, 2, 3}));
    EXPECT_EQ(server.screens()[1].localizedName, "Office Monitor");
    EXPECT_EQ(server.screens()[2].frame, (Rect{{4072, 0}, {1920, 1080}}));
    EXPECT_EQ(server.vendor(9), 0u);
    EXPECT_EQ(server.bounds(9), Rect{});
    EXPECT_EQ(server.currentMode(9), std::nullopt);
    EXPECT_TRUE(server.allModes(9).empty());

    Bench rotated(worldFrom(R"({"displays": [
        {"id": 4, "rotation": 90, "modes": [{"id": 1, "width": 1920, "height": 1080}]}]})"));
    DisplayServer& turned = rotated.machine.displayServer();
    EXPECT_EQ(turned.bounds(4), (Rect{{0, 0}, {1080, 1920}}));
    EXPECT_EQ(turned.screens().at(0).displayID, 4u) << "a nameless screen keeps its display";
}

// What each change does to the arrangement is asserted through Displays (tests/core/display);
// here: nothing before completion, and one event per affected display.
TEST_F(DisplayServerTest, ChangesApplyAtCompletionAndAnnounceEachDisplayOnce) {
    auto config = server.beginConfiguration();
    EXPECT_EQ(config->setMirror(3, 2), kConfigOK);
    EXPECT_EQ(server.mirrorSource(3), 0u) << "queued, not applied";
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(log.events, (Events{{3, kChanged}}));
    EXPECT_EQ(server.bounds(3).origin, (Point{1512, 0})) << "a mirror shares its source's place";
    EXPECT_EQ(apply([](auto& c) { c.setMirror(3, 0); }), (Events{{3, kChanged}}));
    EXPECT_EQ(server.bounds(3).origin, (Point{4072, 0}));

    // Disabled: out of the list, and the main display is the first online one.
    EXPECT_EQ(apply([](auto& c) { c.setEnabled(1, false); }),
              (Events{{1, DisplayChange::removed}}));
    EXPECT_EQ(server.mainDisplay(), 2u);
    EXPECT_EQ(bench.machine.state()["displays"][0]["enabled"], false);
    EXPECT_EQ(apply([](auto& c) { c.setEnabled(1, true); }), (Events{{1, DisplayChange::added}}));
    EXPECT_EQ(server.mainDisplay(), 1u);

    EXPECT_EQ(apply([](auto& c) { c.setMode(2, 22); }), (Events{{2, kChanged}}));
    EXPECT_EQ(server.bounds(2), (Rect{{1512, 0}, {1280, 720}}));
    EXPECT_EQ(apply([](auto& c) { c.setMain(2); }),
              (Events{{1, kChanged}, {2, kChanged}, {3, kChanged}}));
}

TEST_F(DisplayServerTest, RefusedCancelledAndAbandonedChangesLeaveNothing) {
    auto config = server.beginConfiguration();
    // Another display's mode, an unknown mode or display, a mirror of itself.
    for (ConfigStatus status :
         {config->setMode(2, 10), config->setMode(2, 99), config->setMode(9, 20),
          config->setOrigin(9, 0, 0), config->setMain(9), config->setMirror(2, 2),
          config->setMirror(2, 9)})
        EXPECT_EQ(status, kConfigIllegalArgument);
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);

    config = server.beginConfiguration();
    config->setMode(2, 21);
    config->setEnabled(3, false);
    config->setOrigin(1, 100, 100);
    config->cancel();
    EXPECT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    config = server.beginConfiguration();
    config->setMode(2, 21);
    config.reset();

    EXPECT_EQ(server.currentMode(2)->id, 20);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3}));
    EXPECT_EQ(server.bounds(1).origin, (Point{0, 0}));
    EXPECT_TRUE(log.events.empty());
}

TEST_F(DisplayServerTest, PlugsUnplugsAndNewWorldsAnnounceThemselves) {
    // A handler may call back into the server, and stops hearing once removed.
    std::vector<std::vector<DisplayID>> seen;
    const int registration = server.addReconfigurationHandler(
        [&](DisplayID, DisplayChange) { seen.push_back(server.onlineIDs()); });
    bench.machine.setOnline(2, false);
    server.removeReconfigurationHandler(registration);
    EXPECT_EQ(bench.machine.state()["displays"][1]["online"], false);
    bench.machine.setOnline(2, true);
    bench.machine.setOnline(7, false);  // unplugging what is not there says nothing
    EXPECT_EQ(seen, (std::vector<std::vector<DisplayID>>{{1, 3}}));
    EXPECT_EQ(log.events, (Events{{2, DisplayChange::removed}, {2, DisplayChange::added}}));

    World next = defaultWorld();
    next.displays[2].online = false;
    next.cursor = Point{100, 100};
    WorldDisplay guest;
    guest.id = 8;
    guest.modes = {WorldMode{80, 1280, 1024, 1280, 1024, 75, true}};
    guest.origin = Point{0, -1024};
    next.displays.push_back(guest);
    log.events.clear();
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

}  // namespace
}  // namespace lumora::sim::test
