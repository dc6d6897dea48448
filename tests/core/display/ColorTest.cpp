#include <gtest/gtest.h>

#include <cmath>

#include "display/ColorAdjust.h"
#include "display/Gamma.h"

namespace lumora {
namespace {

using nlohmann::json;

constexpr float kTolerance = 1e-6f;

float ramp(int i) {
    return static_cast<float>(i / 255.0);
}

void expectChannel(const std::array<float, kGammaTableSize>& channel, double factor,
                   const char* what) {
    for (int i = 0; i < kGammaTableSize; ++i) {
        EXPECT_NEAR(channel[static_cast<std::size_t>(i)], i / 255.0 * factor, kTolerance)
            << what << " entry " << i;
    }
}

TEST(GammaTable, DefaultIsTheIdentityRamp) {
    const auto table = Gamma::table(ColorAdjust{});
    for (int i = 0; i < kGammaTableSize; ++i) {
        const auto at = static_cast<std::size_t>(i);
        EXPECT_EQ(table.red[at], ramp(i));
        EXPECT_EQ(table.green[at], ramp(i));
        EXPECT_EQ(table.blue[at], ramp(i));
    }
}

TEST(GammaTable, DimScalesEveryChannel) {
    ColorAdjust adjust;
    adjust.dim = 0.5;
    const auto table = Gamma::table(adjust);
    expectChannel(table.red, 0.5, "red");
    expectChannel(table.green, 0.5, "green");
    expectChannel(table.blue, 0.5, "blue");
}

TEST(GammaTable, WarmingTakesBlueDownAndCoolingTakesRedDown) {
    ColorAdjust warm;
    warm.temperature = 1;
    const auto w = Gamma::table(warm);
    expectChannel(w.red, 1.0, "warm red");
    expectChannel(w.green, 0.88, "warm green");
    expectChannel(w.blue, 0.55, "warm blue");

    ColorAdjust cool;
    cool.temperature = -1;
    const auto c = Gamma::table(cool);
    expectChannel(c.red, 0.75, "cool red");
    expectChannel(c.green, 0.88, "cool green");
    expectChannel(c.blue, 1.0, "cool blue");
}

TEST(GammaTable, ContrastPivotsAroundMidGreyAndClamps) {
    ColorAdjust adjust;
    adjust.contrast = 2;
    const auto table = Gamma::table(adjust);
    for (int i = 0; i < kGammaTableSize; ++i) {
        const double x = i / 255.0;
        const auto at = static_cast<std::size_t>(i);
        if (x < 0.25) {
            EXPECT_EQ(table.red[at], 0.0f) << i;
        } else if (x > 0.75) {
            EXPECT_EQ(table.red[at], 1.0f) << i;
        }
        EXPECT_EQ(table.red[at], table.blue[at]);
    }
    EXPECT_NEAR(table.green[128], 2 * (128 / 255.0 - 0.5) + 0.5, kTolerance);
    EXPECT_NEAR(table.green[64], 2 * (64 / 255.0 - 0.5) + 0.5, kTolerance);
}

TEST(GammaTable, GammaIsAnExponentOnTheInput) {
    ColorAdjust adjust;
    adjust.gamma = 2;
    const auto table = Gamma::table(adjust);
    EXPECT_NEAR(table.red[128], 0.2520f, 1e-4f);
    EXPECT_EQ(table.red[128], static_cast<float>(std::pow(128 / 255.0, 2)));
    EXPECT_EQ(table.green[128], table.red[128]);
    EXPECT_EQ(table.blue[128], table.red[128]);
}

TEST(GammaTable, ExtremeSettingsStayInsideZeroToOne) {
    const ColorAdjust extremes[] = {
        {3, 1, 0, 1, 1, 1, 1},        // over-bright: clamps at 1
        {1, 1, 0, -2, 1, 1, 1},       // negative gain: clamps at 0
        {1, 0, 0, 1, 1, 1, -1},       // 0 × infinity at entry 0
        {1, 50, 5, 1, 1, 1, 0.001},   // temperature far past the controls
        {1, -3, -7, 1, 1, 1, 1e300},  // inverted contrast, huge exponent
    };
    for (const auto& adjust : extremes) {
        const auto table = Gamma::table(adjust);
        for (std::size_t i = 0; i < table.red.size(); ++i) {
            for (float v : {table.red[i], table.green[i], table.blue[i]}) {
                ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << "entry " << i << " is " << v;
            }
        }
    }
    EXPECT_EQ(Gamma::table(extremes[0]).red[255], 1.0f);
    EXPECT_EQ(Gamma::table(extremes[0]).red[100], 1.0f);  // 3 × 100/255 > 1
    EXPECT_EQ(Gamma::table(extremes[1]).red[255], 0.0f);
    EXPECT_EQ(Gamma::table(extremes[2]).green[0], 0.0f);  // NaN became 0
    // Temperature 5: blue gain 1 − 2.25 < 0, green 0.4, red untouched.
    EXPECT_EQ(Gamma::table(extremes[3]).blue[200], 0.0f);
}

TEST(ColorAdjustValue, IdentityIsExactlyTheDefaults) {
    EXPECT_TRUE(ColorAdjust{}.isIdentity());
    ColorAdjust negativeZero;
    negativeZero.temperature = -0.0;
    EXPECT_TRUE(negativeZero.isIdentity());
    ColorAdjust almost;
    almost.gamma = 1 + 1e-12;
    EXPECT_FALSE(almost.isIdentity());
    ColorAdjust tinted;
    tinted.blue = 0.9;
    EXPECT_FALSE(tinted.isIdentity());
}

TEST(ColorAdjustJson, EncodesSevenKeysAndRoundTrips) {
    const ColorAdjust adjust{0.4, 1.2, -0.5, 0.9, 1, 0.8, 2.2};
    const json encoded = adjust.toJson();
    EXPECT_EQ(encoded, json::parse(R"({"dim":0.4,"contrast":1.2,"temperature":-0.5,"red":0.9,
                                      "green":1.0,"blue":0.8,"gamma":2.2})"));
    EXPECT_EQ(ColorAdjust::fromJson(encoded), adjust);
    EXPECT_EQ(ColorAdjust::fromJson(json::parse(encoded.dump())), adjust);
}

TEST(ColorAdjustJson, AcceptsIntegersAndIgnoresExtraKeys) {
    const auto decoded = ColorAdjust::fromJson(json::parse(
        R"({"dim":1,"contrast":2,"temperature":0,"red":1,"green":1,"blue":1,"gamma":3,"x":"y"})"));
    ASSERT_TRUE(decoded.has_value());
    EXPECT_EQ(*decoded, (ColorAdjust{1, 2, 0, 1, 1, 1, 3}));
}

TEST(ColorAdjustJson, RejectsMissingKeysWrongTypesAndNonObjects) {
    const json complete = ColorAdjust{}.toJson();
    for (const char* key : {"dim", "contrast", "temperature", "red", "green", "blue", "gamma"}) {
        json missing = complete;
        missing.erase(key);
        EXPECT_FALSE(ColorAdjust::fromJson(missing).has_value()) << "without " << key;
        for (const json& wrong : {json("1"), json(true), json(nullptr), json::array({1})}) {
            json bad = complete;
            bad[key] = wrong;
            EXPECT_FALSE(ColorAdjust::fromJson(bad).has_value()) << key << " = " << wrong;
        }
    }
    EXPECT_FALSE(ColorAdjust::fromJson(json::array()).has_value());
    EXPECT_FALSE(ColorAdjust::fromJson(json(1.0)).has_value());
    EXPECT_FALSE(ColorAdjust::fromJson(json()).has_value());
    json infinite = complete;
    infinite["dim"] = INFINITY;
    EXPECT_FALSE(ColorAdjust::fromJson(infinite).has_value());
}

}  // namespace
}  // namespace lumora
