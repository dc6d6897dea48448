#include <gtest/gtest.h>

#include "VirtualScenario.h"
#include "virtual/LMVirtualScreen.h"
#include "virtual/VirtualScreenConfig.h"
#include "virtual/VirtualScreenPlan.h"

namespace lumora {
namespace {

using nlohmann::json;
using Modes = std::vector<VirtualModeSize>;

TEST(VirtualScreenPlanTest, ConvenienceSizesModesAndMillimetres) {
    const Modes full = {{1920, 1080}, {1680, 944}, {1440, 810}, {1200, 674}, {960, 540}};
    for (bool hiDPI : {false, true}) {
        SCOPED_TRACE(hiDPI);
        auto d = planVirtualScreen("Desk", 1920, 1080, 50, hiDPI, 0x4C4D0001);
        ASSERT_TRUE(d);
        EXPECT_EQ(d->name, "Desk");
        EXPECT_EQ(d->modes, full);
        EXPECT_EQ(d->maxPixelsWide, hiDPI ? 3840u : 1920u);
        EXPECT_EQ(d->maxPixelsHigh, hiDPI ? 2160u : 1080u);
        // The same physical size either way: HiDPI doubles the density, not the panel.
        EXPECT_NEAR(d->sizeMillimeters.width, 443.345454545, 1e-6);
        EXPECT_NEAR(d->sizeMillimeters.height, 249.381818182, 1e-6);
        EXPECT_EQ(d->refresh, 50);
        EXPECT_EQ(d->hiDPI, hiDPI);
        EXPECT_EQ(d->vendor, 0x4C4Du);
        EXPECT_EQ(d->product, 1u);
        EXPECT_EQ(d->serial, 0x4C4D0001u);
    }

    // 0.75 of 800 x 600 is 600 x 450: below the 640 minimum.
    EXPECT_EQ(virtualScreenModes(800, 600), (Modes{{800, 600}, {700, 524}}));
    // Half of 1279 truncates to 639: one short of the minimum.
    EXPECT_EQ(virtualScreenModes(1279, 719),
              (Modes{{1278, 718}, {1118, 628}, {958, 538}, {798, 448}}));
    EXPECT_TRUE(virtualScreenModes(639, 2000).empty());

    EXPECT_FALSE(planVirtualScreen("Zero", 0, 1080, 60, false, 1));
    EXPECT_FALSE(planVirtualScreen("Zero", 1920, 0, 60, true, 1));
    // Doubling would leave 32 bits.
    EXPECT_FALSE(planVirtualScreen("Huge", 0x80000000u, 1080, 60, true, 1));
    EXPECT_EQ(planVirtualScreen("Huge", 0x80000000u, 1080, 60, false, 1)->maxPixelsWide,
              0x80000000u);
}

class VirtualScreenObjectTest : public test::VirtualScenario {
  protected:
    VirtualDisplayDescriptor backing() {
        VirtualDisplayDescriptor d;
        d.name = "Backing";
        d.modes = {{1280, 720}, {960, 540}};
        d.maxPixelsWide = 2560;
        d.maxPixelsHigh = 1440;
        d.sizeMillimeters = Size{500, 280};
        d.hiDPI = true;
        d.vendor = 7;  // replaced: every own display carries the program's vendor number
        d.product = 2;
        d.serial = 99;
        return d;
    }
};

TEST_F(VirtualScreenObjectTest, LivesExactlyAsLongAsTheObject) {
    startFixture(kMonitors);
    auto screen = LMVirtualScreen::create(machine->virtualDisplays(), backing());
    ASSERT_TRUE(screen);
    EXPECT_EQ(screen->displayID(), 100u);
    EXPECT_EQ(state()["virtualDisplays"],
              json::parse(R"([{"id": 100, "name": "Backing", "product": 2, "serial": 99,
                               "hiDPI": true}])"));
    EXPECT_EQ(stateOf(100)["virtual"], true);
    EXPECT_EQ(machine->displayServer().allModes(100).front(),
              (PlatformMode{1, 1280, 720, 2560, 1440, 60, true}));

    screen.reset();
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_TRUE(stateOf(100).is_null());
}

TEST_F(VirtualScreenObjectTest, RefusedDescriptionsCreateNothing) {
    startFixture(kMonitors);
    auto& platform = machine->virtualDisplays();
    auto noModes = backing();
    noModes.modes.clear();
    auto noWidth = backing();
    noWidth.maxPixelsWide = 0;
    auto noHeight = backing();
    noHeight.maxPixelsHigh = 0;
    EXPECT_FALSE(LMVirtualScreen::create(platform, noModes));
    EXPECT_FALSE(LMVirtualScreen::create(platform, noWidth));
    EXPECT_FALSE(LMVirtualScreen::create(platform, noHeight));
    EXPECT_FALSE(LMVirtualScreen::createConvenience(platform, "Zero", 0, 1080, 60, false, 1));
    EXPECT_TRUE(LMVirtualScreensAvailable(platform));
    EXPECT_TRUE(state()["virtualDisplays"].empty());

    startFixture(kMonitors, /*virtualDisplays=*/false);
    EXPECT_FALSE(LMVirtualScreensAvailable(machine->virtualDisplays()));
    EXPECT_FALSE(LMVirtualScreen::create(machine->virtualDisplays(), backing()));
    EXPECT_FALSE(LMVirtualScreen::createConvenience(machine->virtualDisplays(), "Desk", 1920, 1080,
                                                    60, false, 1));
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_TRUE(logged().empty());
}

TEST(VirtualScreenConfigTest, CodesEveryFieldUnderItsName) {
    const VirtualScreenConfig config{0x4C4D0001, "Desk ✓", 1920, 1080, 59.94, true, false};
    EXPECT_EQ(config.toJson(), json::parse(R"({"id": 1280114689, "name": "Desk ✓",
        "width": 1920, "height": 1080, "refresh": 59.94, "hiDPI": true, "enabled": false})"));
    const std::vector<VirtualScreenConfig> list{config, {7, "", -5, 0, 60, false, true}};
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText(VirtualScreenConfig::listToJson(list).dump()),
              list);
    // Integer refresh and unknown keys are fine.
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText(
                  R"([{"id": 1, "name": "A", "width": 1, "height": 2, "refresh": 60,
                       "hiDPI": false, "enabled": true, "colour": "red"}])"),
              (std::vector<VirtualScreenConfig>{{1, "A", 1, 2, 60, false, true}}));
}

TEST(VirtualScreenConfigTest, OneBadEntrySpoilsTheWholeList) {
    const std::string good =
        R"({"id": 1, "name": "A", "width": 1, "height": 2, "refresh": 60, "hiDPI": false,
            "enabled": true})";
    auto with = [&good](const std::string& key, const std::string& value) {
        auto entry = json::parse(good);
        if (value.empty()) {
            entry.erase(key);
        } else {
            entry[key] = json::parse(value);
        }
        return "[" + good + "," + entry.dump() + "]";
    };
    const std::vector<std::string> bad = {
        with("id", "-1"),
        with("id", "4294967296"),
        with("id", "1.0"),
        with("name", "5"),
        with("width", "\"1920\""),
        with("width", "1920.5"),
        with("height", "9223372036854775808"),
        with("refresh", "\"60\""),
        with("refresh", "null"),
        with("hiDPI", "1"),
        with("enabled", ""),
        "{}",
        "[1]",
        "",
        "[{\"id\": 1",
        "\xff\xfe",
    };
    for (const auto& text : bad)
        EXPECT_FALSE(VirtualScreenConfig::listFromJsonText(text)) << text;
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText(with("id", "4294967295"))->back().id,
              0xFFFFFFFFu);
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText("[]"), std::vector<VirtualScreenConfig>{});
}

}  // namespace
}  // namespace lumora
