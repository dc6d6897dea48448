#include <gtest/gtest.h>

#include "adaptive/Sun.h"
#include "sim/World.h"

namespace lumora {
namespace {

double at(const char* utc) {
    return sim::parseUtcTime(utc).value_or(0);
}

// Sunrise and sunset times are the published almanac minutes (the sun's upper edge on the
// horizon with standard refraction: a geometric centre 0.833° below it); the noon heights
// are the almanacs' maximum altitudes.
TEST(Sun, ElevationMatchesPublishedValues) {
    const GeoLocation london{51.5074, -0.1278};
    const GeoLocation newYork{40.7128, -74.0060};
    const GeoLocation sydney{-33.8688, 151.2093};
    EXPECT_NEAR(solarElevation(at("2024-06-21T03:43:00Z"), london), -0.833, 0.5);
    EXPECT_NEAR(solarElevation(at("2024-06-20T12:02:00Z"), london), 61.9, 0.5);
    EXPECT_NEAR(solarElevation(at("2024-12-21T21:32:00Z"), newYork), -0.833, 0.5);
    EXPECT_NEAR(solarElevation(at("2024-12-21T01:53:00Z"), sydney), 79.6, 0.5);
}

TEST(Sun, TwilightAndNightColour) {
    EXPECT_DOUBLE_EQ(daylight(-20), 0.0);
    EXPECT_DOUBLE_EQ(daylight(-6), 0.0);
    EXPECT_DOUBLE_EQ(daylight(0), 0.5);
    EXPECT_DOUBLE_EQ(daylight(6), 1.0);
    EXPECT_LT(daylight(-1), daylight(1));

    const ChannelGains warm = colorTemperatureGains(4000);
    EXPECT_DOUBLE_EQ(warm.red, 1.0);
    EXPECT_NEAR(warm.green, 0.807, 0.01);
    EXPECT_NEAR(warm.blue, 0.651, 0.01);
    const ChannelGains daylightWhite = colorTemperatureGains(6500);
    EXPECT_GT(daylightWhite.blue, 0.97);
    EXPECT_EQ(blend(warm, ChannelGains{}, 1.0), ChannelGains{});
}

TEST(Sun, UtcTimesParseExactly) {
    EXPECT_EQ(sim::parseUtcTime("1970-01-01T00:00:00Z"), 0.0);
    EXPECT_EQ(sim::parseUtcTime("2000-03-01T00:00:00Z"), 951868800.0);
    EXPECT_EQ(sim::parseUtcTime("2026-06-21T12:30:15Z"), 1782045015.0);
    for (const char* bad : {"2026-06-21 12:30:15Z", "2026-02-29T00:00:00Z", "2026-13-01T00:00:00Z",
                            "2026-06-21T24:00:00Z", "2026-06-21T12:30:15", "", "x"}) {
        EXPECT_FALSE(sim::parseUtcTime(bad)) << bad;
    }
}

}  // namespace
}  // namespace lumora
