#include "display/DisplayMode.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <unordered_set>

namespace lumora {
namespace {

PlatformMode platform(std::int32_t id, std::int64_t w, std::int64_t h, std::int64_t pw,
                      std::int64_t ph, double refresh, bool usable = true) {
    return PlatformMode{id, w, h, pw, ph, refresh, usable};
}

std::vector<std::int32_t> ids(const std::vector<DisplayMode>& modes) {
    std::vector<std::int32_t> out;
    for (const auto& m : modes)
        out.push_back(m.id);
    return out;
}

TEST(DisplayModeLabel, FollowsTheDocumentedShape) {
    struct Case {
        DisplayMode mode;
        const char* label;
    };
    const Case cases[] = {
        {{1, 1512, 982, 3024, 1964, 120}, "1512×982 HiDPI · 120 Hz"},
        {{2, 1920, 1080, 1920, 1080, 0}, "1920×1080"},
        {{3, 2560, 1440, 2560, 1440, 60}, "2560×1440 · 60 Hz"},
        {{4, 1920, 1080, 1920, 1080, 59.94}, "1920×1080 · 60 Hz"},
        {{5, 1920, 1080, 1920, 1080, 59.5}, "1920×1080 · 60 Hz"},  // half away from zero
        {{6, 1920, 1080, 1920, 1080, 60.49}, "1920×1080 · 60 Hz"},
        {{7, 1920, 1080, 1920, 1080, 0.4}, "1920×1080 · 0 Hz"},  // any positive refresh shows
        {{8, 1920, 1080, 1920, 1080, -60}, "1920×1080"},
        // Only widths decide HiDPI.
        {{9, 1000, 800, 1000, 1600, 60}, "1000×800 · 60 Hz"},
        {{10, 1000, 800, 2000, 800, 60}, "1000×800 HiDPI · 60 Hz"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.mode.label(), c.label) << "mode " << c.mode.id;
    }
}

TEST(DisplayModeLabel, ExtremeRefreshValuesStillGiveText) {
    // 1e300 written out in full: 301 digits.
    DisplayMode huge{1, 10, 10, 10, 10, 1e300};
    const std::string prefix = "10×10 · 1";
    EXPECT_EQ(huge.label().rfind(prefix, 0), 0u);
    EXPECT_EQ(huge.label().size(), prefix.size() + 300 + 3);
    EXPECT_EQ(huge.label().substr(huge.label().size() - 3), " Hz");
    DisplayMode nan{2, 10, 10, 10, 10, std::numeric_limits<double>::quiet_NaN()};
    EXPECT_EQ(nan.label(), "10×10");
}

TEST(DisplayModeValue, EqualityAndHashCoverAllFieldsAndNegativeZero) {
    const DisplayMode a{7, 1920, 1080, 3840, 2160, 0.0};
    const DisplayMode negativeZero{7, 1920, 1080, 3840, 2160, -0.0};
    EXPECT_EQ(a, negativeZero);
    EXPECT_EQ(std::hash<DisplayMode>{}(a), std::hash<DisplayMode>{}(negativeZero));

    std::unordered_set<DisplayMode> set{a, negativeZero};
    EXPECT_EQ(set.size(), 1u);
    set.insert({8, 1920, 1080, 3840, 2160, 0.0});
    set.insert({7, 1920, 1080, 3840, 2161, 0.0});
    set.insert({7, 1920, 1080, 3840, 2160, 60.0});
    EXPECT_EQ(set.size(), 4u);
}

TEST(DisplayModeValue, FromPlatformTakesNonFiniteRefreshAsNone) {
    EXPECT_EQ(DisplayMode::from(platform(3, 800, 600, 1600, 1200, 75)),
              (DisplayMode{3, 800, 600, 1600, 1200, 75}));
    EXPECT_EQ(DisplayMode::from(platform(3, 800, 600, 800, 600, std::nan(""))).refresh, 0.0);
    EXPECT_EQ(DisplayMode::from(platform(3, 800, 600, 800, 600, INFINITY)).refresh, 0.0);
}

TEST(SelectableModes, KeepsUsableOnlyAndSortsLargestHiDPIFastestFirst) {
    const std::vector<PlatformMode> input{
        platform(1, 1280, 800, 1280, 800, 60),
        platform(2, 1920, 1080, 1920, 1080, 60),
        platform(3, 1920, 1080, 3840, 2160, 30),
        platform(4, 2560, 1440, 2560, 1440, 60, false),  // not usable for the desktop
        platform(5, 1920, 1080, 1920, 1080, 120),
        platform(6, 1280, 800, 2560, 1600, 60),
    };
    // Same area: HiDPI before low resolution even at a lower refresh; then refresh desc.
    EXPECT_EQ(ids(selectableModes(input)), (std::vector<std::int32_t>{3, 5, 2, 6, 1}));
}

TEST(SelectableModes, EqualKeysKeepThePlatformOrder) {
    // 1600×900 and 1440×1000 have the same area, both not HiDPI, same refresh.
    const std::vector<PlatformMode> input{
        platform(1, 1600, 900, 1600, 900, 60),
        platform(2, 1440, 1000, 1440, 1000, 60),
        platform(3, 1440, 1000, 1440, 1000, 50),
        platform(4, 1600, 900, 1600, 900, 50),
    };
    EXPECT_EQ(ids(selectableModes(input)), (std::vector<std::int32_t>{1, 2, 3, 4}));
}

TEST(SelectableModes, DuplicatesDifferOnlyInPixelHeightOrRefreshFraction) {
    const std::vector<PlatformMode> input{
        platform(1, 1920, 1080, 1920, 1080, 59.0),
        platform(2, 1920, 1080, 1920, 1080, 59.94),
        platform(3, 1920, 1080, 1920, 1200, 60.0),
        platform(4, 1920, 1080, 1920, 1080, 60.0),
    };
    const auto modes = selectableModes(input);
    // Sorted 60 (3), 60 (4), 59.94 (2), 59 (1): 4 repeats 3 apart from its pixel height, 1
    // repeats 2 once truncated. 59.94 and 60 stay apart ("59" and "60").
    EXPECT_EQ(ids(modes), (std::vector<std::int32_t>{3, 2}));
    EXPECT_EQ(modes[0].label(), "1920×1080 · 60 Hz");
    EXPECT_EQ(modes[1].label(), "1920×1080 · 60 Hz");
}

TEST(SelectableModes, PixelWidthSeparatesHiDPIFromLowResolutionVariant) {
    const std::vector<PlatformMode> input{
        platform(10, 1920, 1080, 1920, 1080, 60),
        platform(11, 1920, 1080, 3840, 2160, 60),
    };
    const auto modes = selectableModes(input);
    EXPECT_EQ(ids(modes), (std::vector<std::int32_t>{11, 10}));
    EXPECT_EQ(modes[0], (DisplayMode{11, 1920, 1080, 3840, 2160, 60}));
}

TEST(SelectableModes, EmptyOrAllUnusableGivesNothing) {
    EXPECT_TRUE(selectableModes({}).empty());
    EXPECT_TRUE(selectableModes({platform(1, 800, 600, 800, 600, 60, false)}).empty());
}

TEST(SelectableModes, GarbageFromTheServerDoesNotBreakSortingOrDedup) {
    const std::int64_t big = std::numeric_limits<std::int64_t>::max();
    const std::vector<PlatformMode> input{
        platform(1, big, big, big, big, std::nan("")),
        platform(2, -5, 7, 0, 0, -1),
        platform(3, big, big, big, big, INFINITY),  // same key as 1 once refresh is 0
        platform(4, 0, 0, 0, 0, 1e300),
    };
    EXPECT_EQ(ids(selectableModes(input)), (std::vector<std::int32_t>{1, 4, 2}));
}

}  // namespace
}  // namespace lumora
