#include <gtest/gtest.h>

#include "core/display/DisplayScenario.h"
#include "virtual/LMVirtualScreen.h"
#include "virtual/VirtualScreenConfig.h"
#include "virtual/VirtualScreenPlan.h"

namespace lumora {
namespace {

using nlohmann::json;
using Modes = std::vector<VirtualModeSize>;
using Configs = std::vector<VirtualScreenConfig>;

TEST(VirtualScreenPlanTest, ConvenienceSizesModesAndMillimetres) {
    for (bool hiDPI : {false, true}) {
        auto d = planVirtualScreen("Desk", 1920, 1080, 50, hiDPI, 0x4C4D0001);
        ASSERT_TRUE(d);
        EXPECT_EQ(d->modes,
                  (Modes{{1920, 1080}, {1680, 944}, {1440, 810}, {1200, 674}, {960, 540}}));
        EXPECT_EQ(d->maxPixelsWide, hiDPI ? 3840u : 1920u);
        EXPECT_EQ(d->maxPixelsHigh, hiDPI ? 2160u : 1080u);
        // The same physical size either way: HiDPI doubles the density, not the panel.
        EXPECT_NEAR(d->sizeMillimeters.width, 443.345454545, 1e-6);
        EXPECT_EQ((std::tuple{d->name, d->refresh, d->hiDPI, d->vendor, d->product, d->serial}),
                  (std::tuple{std::string("Desk"), 50.0, hiDPI, 0x4C4Du, 1u, 0x4C4D0001u}));
    }
    // 0.75 of 800 x 600 is 600 x 450: below the 640 minimum. Half of 1279 truncates to 639.
    EXPECT_EQ(virtualScreenModes(800, 600), (Modes{{800, 600}, {700, 524}}));
    EXPECT_EQ(virtualScreenModes(1279, 719),
              (Modes{{1278, 718}, {1118, 628}, {958, 538}, {798, 448}}));
    EXPECT_TRUE(virtualScreenModes(639, 2000).empty());
    EXPECT_FALSE(planVirtualScreen("Zero", 1920, 0, 60, true, 1));
    // Doubling would leave 32 bits.
    EXPECT_FALSE(planVirtualScreen("Huge", 0x80000000u, 1080, 60, true, 1));
    EXPECT_EQ(planVirtualScreen("Huge", 0x80000000u, 1080, 60, false, 1)->maxPixelsWide,
              0x80000000u);
}

class VirtualScreenObjectTest : public test::DisplayScenario {};

TEST_F(VirtualScreenObjectTest, LivesExactlyAsLongAsTheObjectAndRefusalsCreateNothing) {
    startFixture(kMonitors);
    auto& platform = machine->virtualDisplays();
    VirtualDisplayDescriptor backing;
    backing.name = "Backing";
    backing.modes = {{1280, 720}, {960, 540}};
    backing.maxPixelsWide = 2560;
    backing.maxPixelsHigh = 1440;
    backing.hiDPI = true;
    backing.vendor = 7;  // replaced: every own display carries the program's vendor number
    backing.product = 2;
    backing.serial = 99;
    auto refused = backing;
    refused.maxPixelsHigh = 0;
    EXPECT_FALSE(LMVirtualScreen::create(platform, refused));
    refused = backing;
    refused.modes.clear();
    EXPECT_FALSE(LMVirtualScreen::create(platform, refused));
    EXPECT_TRUE(state()["virtualDisplays"].empty());
    EXPECT_TRUE(LMVirtualScreensAvailable(platform));

    auto screen = LMVirtualScreen::create(platform, backing);
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

    startFixture(kMonitors, /*virtualDisplays=*/false);
    EXPECT_FALSE(LMVirtualScreensAvailable(machine->virtualDisplays()));
    EXPECT_FALSE(LMVirtualScreen::create(machine->virtualDisplays(), backing));
    EXPECT_TRUE(logged().empty());
}

TEST(VirtualScreenConfigTest, CodesEveryFieldUnderItsNameAndOneBadEntrySpoilsTheList) {
    const VirtualScreenConfig config{0x4C4D0001, "Desk ✓", 1920, 1080, 59.94, true, false};
    EXPECT_EQ(config.toJson(), json::parse(R"({"id": 1280114689, "name": "Desk ✓",
        "width": 1920, "height": 1080, "refresh": 59.94, "hiDPI": true, "enabled": false})"));
    const Configs list{config, {7, "", -5, 0, 60, false, true}};
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText(VirtualScreenConfig::listToJson(list).dump()),
              list);

    const json good = json::parse(R"({"id": 1, "name": "A", "width": 1, "height": 2,
                                      "refresh": 60, "hiDPI": false, "enabled": true})");
    auto with = [&good](const std::string& key, const std::string& value) {
        auto entry = good;
        if (value.empty()) {
            entry.erase(key);
        } else {
            entry[key] = json::parse(value);
        }
        return "[" + good.dump() + "," + entry.dump() + "]";
    };
    // Integer refresh, the largest id and unknown keys are fine.
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText(with("colour", "\"red\"")),
              (Configs{{1, "A", 1, 2, 60, false, true}, {1, "A", 1, 2, 60, false, true}}));
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText(with("id", "4294967295"))->back().id,
              0xFFFFFFFFu);
    EXPECT_EQ(VirtualScreenConfig::listFromJsonText("[]"), Configs{});
    // One row per reader branch and per field's type; text that is no JSON at all.
    for (const std::string& text :
         {with("id", "-1"), with("id", "4294967296"), with("id", "1.0"), with("name", "5"),
          with("width", "1920.5"), with("height", "9223372036854775808"), with("refresh", "\"60\""),
          with("hiDPI", "1"), with("enabled", ""), std::string("{}"), std::string("[1]"),
          std::string("[{\"id\": 1")}) {
        EXPECT_FALSE(VirtualScreenConfig::listFromJsonText(text)) << text;
    }
}

}  // namespace
}  // namespace lumora
