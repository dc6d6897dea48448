#include "display/DisplayMode.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace lumora {
namespace {

using Ids = std::vector<std::int32_t>;

TEST(DisplayMode, LabelShowsPointsHiDPIAndRoundedRefresh) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<DisplayMode, const char*> cases[] = {
        {{1, 1512, 982, 3024, 1964, 120}, "1512×982 HiDPI · 120 Hz"},
        {{2, 1920, 1080, 1920, 1080, 0}, "1920×1080"},
        {{4, 1920, 1080, 1920, 1080, 59.94}, "1920×1080 · 60 Hz"},
        {{5, 1920, 1080, 1920, 1080, 59.5}, "1920×1080 · 60 Hz"},  // half away from zero
        {{7, 10, 10, 10, 10, nan}, "10×10"},
        {{8, 1000, 800, 1000, 1600, 60}, "1000×800 · 60 Hz"},  // only widths decide HiDPI
        {{9, 1000, 800, 2000, 800, 60}, "1000×800 HiDPI · 60 Hz"},
    };
    for (const auto& [mode, label] : cases)
        EXPECT_EQ(mode.label(), label) << "mode " << mode.id;
    // The largest finite refresh still fits: 1e300 written out is 301 digits.
    EXPECT_EQ(DisplayMode({1, 10, 10, 10, 10, 1e300}).label().size(),
              std::string("10×10 · ").size() + 301 + std::string(" Hz").size());

    EXPECT_EQ(DisplayMode::from({3, 800, 600, 800, 600, INFINITY, true}).refresh, 0.0);
}

PlatformMode mode(std::int32_t id, std::int64_t w, std::int64_t h, std::int64_t pw, std::int64_t ph,
                  double refresh, bool usable = true) {
    return PlatformMode{id, w, h, pw, ph, refresh, usable};
}

TEST(DisplayMode, SelectableModesSortLargestHiDPIFastestFirstAndDropDuplicates) {
    const std::int64_t big = std::numeric_limits<std::int64_t>::max();
    struct Case {
        const char* what;
        std::vector<PlatformMode> input;
        Ids expected;
    };
    const Case cases[] = {
        {"usable only; same area: HiDPI first even at a lower refresh, then refresh",
         {mode(1, 1280, 800, 1280, 800, 60), mode(2, 1920, 1080, 1920, 1080, 60),
          mode(3, 1920, 1080, 3840, 2160, 30), mode(4, 2560, 1440, 2560, 1440, 60, false),
          mode(5, 1920, 1080, 1920, 1080, 120), mode(6, 1280, 800, 2560, 1600, 60)},
         {3, 5, 2, 6, 1}},
        {"equal keys keep the platform order",
         {mode(1, 1600, 900, 1600, 900, 60), mode(2, 1440, 1000, 1440, 1000, 60),
          mode(3, 1440, 1000, 1440, 1000, 50), mode(4, 1600, 900, 1600, 900, 50)},
         {1, 2, 3, 4}},
        // 4 repeats 3 but for its pixel height; 59 repeats 59.94 once truncated; 59.94 and 60
        // stay apart.
        {"duplicates",
         {mode(1, 1920, 1080, 1920, 1080, 59.0), mode(2, 1920, 1080, 1920, 1080, 59.94),
          mode(3, 1920, 1080, 1920, 1200, 60.0), mode(4, 1920, 1080, 1920, 1080, 60.0)},
         {3, 2}},
        {"pixel width separates the HiDPI variant",
         {mode(10, 1920, 1080, 1920, 1080, 60), mode(11, 1920, 1080, 3840, 2160, 60)},
         {11, 10}},
        {"nothing usable", {mode(1, 800, 600, 800, 600, 60, false)}, {}},
        {"garbage from the server",
         {mode(1, big, big, big, big, std::nan("")), mode(2, -5, 7, 0, 0, -1),
          mode(3, big, big, big, big, INFINITY), mode(4, 0, 0, 0, 0, 1e300)},
         {1, 4, 2}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Ids ids;
        for (const auto& m : selectableModes(c.input))
            ids.push_back(m.id);
        EXPECT_EQ(ids, c.expected);
    }
}

}  // namespace
}  // namespace lumora
