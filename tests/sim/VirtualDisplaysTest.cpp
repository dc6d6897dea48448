// The simulated virtual displays. Refused descriptors, machines without virtual displays and
// HiDPI pixels are exercised through the core's virtual screens (tests/core/virtual).
#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

using Events = std::vector<std::pair<DisplayID, DisplayChange>>;

class VirtualDisplaysTest : public ::testing::Test {
  protected:
    VirtualDisplaysTest() { log.attach(server); }
    std::unique_ptr<VirtualDisplayHandle> create(bool hiDPI) {
        return bench.machine.virtualDisplays().create(descriptor(hiDPI));
    }

    Bench bench{defaultWorld()};
    DisplayServer& server = bench.machine.displayServer();
    EventLog log;
};

TEST_F(VirtualDisplaysTest, DisplaysAppearAtTheRightAndIdsClimbFromTheLargestKnown) {
    auto plain = create(false);
    auto sharp = create(true);
    ASSERT_TRUE(plain && sharp);
    EXPECT_EQ(plain->displayID(), 100u);
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3, 100, 101}));
    EXPECT_EQ(server.vendor(100), kVirtualVendor);
    EXPECT_EQ(server.model(100), 1u);
    EXPECT_EQ(server.serial(100), 77u);
    EXPECT_EQ(server.physicalSize(100), (Size{600, 340}));
    EXPECT_EQ(server.allModes(100),
              (std::vector<PlatformMode>{{1, 1920, 1080, 1920, 1080, 50, true},
                                         {2, 1280, 720, 1280, 720, 50, true}}));
    EXPECT_EQ(server.bounds(100), (Rect{{5992, 0}, {1920, 1080}}));
    EXPECT_EQ(server.screens().at(3).localizedName, "Lumora 1920×1080");

    plain.reset();
    EXPECT_EQ(server.onlineIDs(), (std::vector<DisplayID>{1, 2, 3, 101}));
    EXPECT_EQ(log.events, (Events{{100, DisplayChange::added},
                                  {101, DisplayChange::added},
                                  {100, DisplayChange::removed}}));
    EXPECT_EQ(bench.machine.state()["virtualDisplays"].size(), 1u);
    auto third = create(false);
    EXPECT_EQ(third->displayID(), 102u);
    sharp.reset();
    third.reset();
    EXPECT_EQ(create(false)->displayID(), 100u);
}

TEST_F(VirtualDisplaysTest, RemovingAMirroredDisplayEndsTheMirrorAndHandlesMayOutliveTheMachine) {
    auto handle = create(true);
    auto config = server.beginConfiguration();
    ASSERT_EQ(config->setMirror(2, handle->displayID()), kConfigOK);
    ASSERT_EQ(config->complete(ConfigureOption::permanently), kConfigOK);
    EXPECT_EQ(server.mirrorSource(2), 100u);
    handle.reset();
    EXPECT_EQ(server.mirrorSource(2), 0u);
    EXPECT_EQ(server.screens().size(), 3u);

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
