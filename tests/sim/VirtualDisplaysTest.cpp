#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

using Events = std::vector<std::pair<DisplayID, DisplayChange>>;

VirtualDisplayDescriptor descriptor(bool hiDPI) {
    VirtualDisplayDescriptor d;
    d.name = hiDPI ? "Lumora HiDPI" : "Lumora 1920×1080";
    d.modes = {{1920, 1080}, {1280, 720}};
    d.maxPixelsWide = hiDPI ? 3840 : 1920;
    d.maxPixelsHigh = hiDPI ? 2160 : 1080;
    d.sizeMillimeters = Size{600, 340};
    d.refresh = 50;
    d.hiDPI = hiDPI;
    d.product = hiDPI ? 2 : 1;
    d.serial = 77;
    return d;
}

class VirtualDisplaysTest : public ::testing::Test {
  protected:
    VirtualDisplaysTest() : bench(defaultWorld()), server(bench.machine.displayServer()) {
        log.attach(server);
    }
    Bench bench;
    DisplayServer& server;
    EventLog log;
};

TEST_F(VirtualDisplaysTest, PlainDisplayAppearsAtTheRight) {
    auto handle = bench.machine.virtualDisplays().create(descriptor(false));
    ASSERT_TRUE(handle);
    EXPECT_EQ(handle->displayID(), 100u);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3, 100}));
    EXPECT_EQ(server.vendor(100), kVirtualVendor);
    EXPECT_EQ(server.model(100), 1u);
    EXPECT_EQ(server.serial(100), 77u);
    EXPECT_EQ(server.physicalSize(100), (Size{600, 340}));
    EXPECT_EQ(server.allModes(100),
              (std::vector<PlatformMode>{{1, 1920, 1080, 1920, 1080, 50, true},
                                         {2, 1280, 720, 1280, 720, 50, true}}));
    EXPECT_EQ(server.bounds(100), (Rect{{5992, 0}, {1920, 1080}}));
    EXPECT_EQ(server.screens().back().localizedName, "Lumora 1920×1080");
    EXPECT_EQ(log.events, (Events{{100, DisplayChange::added}}));
    EXPECT_EQ(bench.machine.state()["virtualDisplays"],
              nlohmann::json::parse(R"([{"id": 100, "name": "Lumora 1920×1080", "product": 1,
                                         "serial": 77, "hiDPI": false}])"));
}

TEST_F(VirtualDisplaysTest, HiDPIDoublesThePixelsAndIdsKeepClimbing) {
    auto plain = bench.machine.virtualDisplays().create(descriptor(false));
    auto sharp = bench.machine.virtualDisplays().create(descriptor(true));
    ASSERT_TRUE(plain && sharp);
    EXPECT_EQ(sharp->displayID(), 101u);
    EXPECT_EQ(server.allModes(101),
              (std::vector<PlatformMode>{{1, 1920, 1080, 3840, 2160, 50, true},
                                         {2, 1280, 720, 2560, 1440, 50, true}}));
    EXPECT_EQ(server.bounds(101).origin, (Point{7912, 0}));

    log.events.clear();
    plain.reset();
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3, 101}));
    EXPECT_EQ(log.events, (Events{{100, DisplayChange::removed}}));
    const auto state = bench.machine.state();
    EXPECT_EQ(state["displays"].size(), 4u);
    EXPECT_EQ(state["displays"][3]["id"], 101);
    ASSERT_EQ(state["virtualDisplays"].size(), 1u);
    EXPECT_EQ(state["virtualDisplays"][0]["hiDPI"], true);

    // The next id follows the largest one the machine knows.
    auto third = bench.machine.virtualDisplays().create(descriptor(false));
    EXPECT_EQ(third->displayID(), 102u);
    sharp.reset();
    third.reset();
    auto again = bench.machine.virtualDisplays().create(descriptor(false));
    EXPECT_EQ(again->displayID(), 100u);
}

TEST_F(VirtualDisplaysTest, RefusedDescriptorsMakeNothing) {
    auto noModes = descriptor(false);
    noModes.modes.clear();
    auto noPixels = descriptor(false);
    noPixels.maxPixelsHigh = 0;
    EXPECT_EQ(bench.machine.virtualDisplays().create(noModes), nullptr);
    EXPECT_EQ(bench.machine.virtualDisplays().create(noPixels), nullptr);

    World world = defaultWorld();
    world.virtualDisplays = false;
    Bench without(world);
    EXPECT_FALSE(without.machine.virtualDisplays().available());
    EXPECT_EQ(without.machine.virtualDisplays().create(descriptor(false)), nullptr);

    EXPECT_EQ(server.onlineIDs().size(), 3u);
    EXPECT_TRUE(log.events.empty());
    EXPECT_TRUE(bench.machine.state()["virtualDisplays"].empty());
}

TEST_F(VirtualDisplaysTest, RemovingAMirroredVirtualDisplayEndsTheMirror) {
    auto handle = bench.machine.virtualDisplays().create(descriptor(true));
    auto config = server.beginConfiguration();
    ASSERT_EQ(config->setMirror(2, handle->displayID()), kConfigOK);
    ASSERT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.mirrorSource(2), 100u);
    std::vector<DisplayID> screenIDs;
    for (const auto& s : server.screens())
        screenIDs.push_back(*s.displayID);
    EXPECT_EQ(screenIDs, (std::vector<DisplayID>{1, 3, 100}));

    handle.reset();
    EXPECT_EQ(server.mirrorSource(2), 0u);
    EXPECT_EQ(server.screens().size(), 3u);
}

TEST_F(VirtualDisplaysTest, HandleOutlivingTheMachineIsHarmless) {
    std::unique_ptr<VirtualDisplayHandle> handle;
    {
        Bench other(defaultWorld());
        handle = other.machine.virtualDisplays().create(descriptor(false));
    }
    ASSERT_TRUE(handle);
    EXPECT_EQ(handle->displayID(), 100u);
    handle.reset();
}

}  // namespace
}  // namespace lumora::sim::test
