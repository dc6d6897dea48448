// Display values of CoreGraphics and AppKit as the backend turns them into port facts.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "decode/Coordinates.h"
#include "decode/GammaMemory.h"
#include "decode/MainDisplayMove.h"
#include "decode/ModeFields.h"
#include "decode/Reconfiguration.h"

namespace lumora::mac {
namespace {

TEST(Reconfiguration, RecordedFlagsGiveOneOutcomePerDisplay) {
    using C = DisplayChange;
    const struct {
        std::uint32_t flags;
        std::optional<DisplayChange> expected;
    } cases[] = {
        {0x0001, std::nullopt},                        // begin phase
        {0x0011, std::nullopt},                        // begin phase of a plug-in
        {0x0010, C::added},                            // monitor plugged in
        {0x0110, C::added},                            // switched on in software
        {0x0100, C::added},     {0x0020, C::removed},  // unplugged
        {0x0220, C::removed},                          // switched off in software
        {0x0200, C::removed},   {0x0002, C::changed},  // moved
        {0x0006, C::changed},                          // moved, became main
        {0x1008, C::changed},                          // mode set, desktop shape changed
        {0x0400, C::changed},                          // mirrored
        {0x0030, C::changed},                          // both ways at once: read everything again
        {0x0000, C::changed},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(decodeReconfiguration(c.flags), c.expected) << std::hex << c.flags;
    }
}

TEST(MainDisplayMove, EveryOriginMovesByTheNewMainsOffset) {
    const DisplayOrigin laptopAndTwo[] = {{1, {0, 0}}, {2, {1512, -200}}, {3, {-1920, 100}}};
    EXPECT_EQ(originsForMain(laptopAndTwo, 2),
              (std::vector<OriginMove>{{1, -1512, 200}, {2, 0, 0}, {3, -3432, 300}}));
    // Already main: the origins are issued as they are.
    EXPECT_EQ(originsForMain(laptopAndTwo, 1),
              (std::vector<OriginMove>{{1, 0, 0}, {2, 1512, -200}, {3, -1920, 100}}));
    EXPECT_EQ(originsForMain(laptopAndTwo, 9), std::nullopt);
    EXPECT_EQ(originsForMain({}, 1), std::nullopt);

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const DisplayOrigin broken[] = {{1, {0, 0}}, {2, {nan, 0}}};
    EXPECT_EQ(originsForMain(broken, 1), std::nullopt);
    const DisplayOrigin far[] = {{1, {0, 0}}, {2, {-3e9, 0}}};
    EXPECT_EQ(originsForMain(far, 2), std::nullopt);
}

TEST(ModeFields, RecordedModesPassAndBrokenValuesAreClamped) {
    const std::int32_t hiDPI = modeHandle(77, 3024, 1964);
    EXPECT_EQ(decodeMode({77, 1512, 982, 3024, 1964, 59.94, false}),
              (PlatformMode{hiDPI, 1512, 982, 3024, 1964, 59.94, false}));
    // Its low-resolution duplicate carries the same number: the handles still differ, and
    // each names its own mode again next time.
    const std::int32_t lowResolution = decodeMode({77, 1512, 982, 1512, 982, 59.94, true}).id;
    EXPECT_NE(lowResolution, hiDPI);
    EXPECT_EQ(lowResolution, modeHandle(77, 1512, 982));
    EXPECT_GE(modeHandle(-1, 1, 1), 0);
    // A refresh the system cannot give (built-ins report 0) reads as none.
    for (double refresh : {-60.0, std::nan(""), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(decodeMode({1, 800, 600, 800, 600, refresh, false}).refresh, 0) << refresh;
    const std::size_t huge = std::numeric_limits<std::size_t>::max();
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(decodeMode({-3, huge, 1, huge, 2, 60, true}),
              (PlatformMode{modeHandle(-3, huge, 2), kMax, 1, kMax, 2, 60, true}));
}

TEST(Coordinates, AppKitBottomLeftBecomesTopLeftOfTheMainDisplay) {
    // Main display 1512x982 at the origin, a monitor 1440 high standing above it.
    constexpr double kMainHeight = 982;
    EXPECT_EQ(pointFromAppKit({100, 982}, kMainHeight), (Point{100, 0}));  // top row
    EXPECT_EQ(pointFromAppKit({100, 1}, kMainHeight), (Point{100, 981}));  // bottom row
    EXPECT_EQ(pointFromAppKit({300, 1500}, kMainHeight), (Point{300, -518}));
    EXPECT_EQ(frameFromAppKit({{0, 0}, {1512, 982}}, kMainHeight), (Rect{{0, 0}, {1512, 982}}));
    EXPECT_EQ(frameFromAppKit({{-200, 982}, {2560, 1440}}, kMainHeight),
              (Rect{{-200, -1440}, {2560, 1440}}));
}

GammaRamps ramps(std::size_t size, float value) {
    return {std::vector<float>(size, value), std::vector<float>(size, value),
            std::vector<float>(size, value)};
}

TEST(GammaMemory, ResettingOneDisplayReloadsTheOthersOnly) {
    EXPECT_TRUE(GammaMemory::fits(ramps(1024, 0.5f), 1024));
    EXPECT_FALSE(GammaMemory::fits(ramps(256, 0.5f), 1024));
    EXPECT_FALSE(GammaMemory::fits(ramps(0, 0.5f), 0));
    GammaRamps ragged = ramps(256, 0.5f);
    ragged.blue.pop_back();
    EXPECT_FALSE(GammaMemory::fits(ragged, 256));

    GammaMemory memory;
    memory.remember(3, ramps(2, 0.3f));
    memory.remember(1, ramps(2, 0.1f));
    memory.remember(2, ramps(2, 0.2f));
    memory.remember(1, ramps(2, 0.9f));  // a later table replaces the earlier one
    auto others = memory.others(2);
    ASSERT_EQ(others.size(), 2u);
    EXPECT_EQ(others[0].first, 1u);
    EXPECT_EQ(others[0].second.red, (std::vector<float>{0.9f, 0.9f}));
    EXPECT_EQ(others[1].first, 3u);

    memory.forget(1);
    const DisplayID online[] = {2};
    memory.keepOnly(online);
    others = memory.others(0);
    ASSERT_EQ(others.size(), 1u);
    EXPECT_EQ(others[0].first, 2u);
    EXPECT_EQ(others[0].second.green, (std::vector<float>{0.2f, 0.2f}));
    EXPECT_TRUE(memory.others(2).empty());
}

}  // namespace
}  // namespace lumora::mac
