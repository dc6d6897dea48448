#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "DisplayScenario.h"
#include "display/ColorAdjust.h"
#include "display/Gamma.h"

namespace lumora {
namespace {

using nlohmann::json;
using Curve = std::function<double(double)>;

ColorAdjust with(double ColorAdjust::*field, double value) {
    ColorAdjust adjust;
    adjust.*field = value;
    return adjust;
}

TEST(GammaTable, WorkedValuesForEachControl) {
    auto scaled = [](double f) { return Curve([f](double x) { return f * x; }); };
    auto contrast2 = [](double x) { return std::clamp(2 * (x - 0.5) + 0.5, 0.0, 1.0); };
    auto squared = [](double x) { return x * x; };
    struct Case {
        const char* what;
        ColorAdjust adjust;
        Curve red, green, blue;
    };
    const Case cases[] = {
        {"identity", {}, scaled(1), scaled(1), scaled(1)},
        {"dim 0.5", with(&ColorAdjust::dim, 0.5), scaled(0.5), scaled(0.5), scaled(0.5)},
        {"warm", with(&ColorAdjust::temperature, 1), scaled(1), scaled(0.88), scaled(0.55)},
        {"cool", with(&ColorAdjust::temperature, -1), scaled(0.75), scaled(0.88), scaled(1)},
        {"contrast 2", with(&ColorAdjust::contrast, 2), contrast2, contrast2, contrast2},
        {"gamma 2", with(&ColorAdjust::gamma, 2), squared, squared, squared},  // 0.2520 at 128
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        GammaCurve table;
        Gamma::fill(c.adjust, table);
        for (std::size_t i = 0; i < kGammaCurvePoints; ++i) {
            const double x = static_cast<double>(i) / 255.0;
            ASSERT_NEAR(table.red[i], c.red(x), 1e-6) << i;
            ASSERT_NEAR(table.green[i], c.green(x), 1e-6) << i;
            ASSERT_NEAR(table.blue[i], c.blue(x), 1e-6) << i;
        }
    }
}

TEST(GammaTable, ExtremeSettingsStayInsideZeroToOne) {
    // Over-bright, negative gain, 0 × infinity at entry 0 (NaN), temperature far past the
    // controls, inverted contrast with a huge exponent.
    for (const ColorAdjust& adjust :
         {ColorAdjust{3, 1, 0, 1, 1, 1, 1}, ColorAdjust{1, 1, 0, -2, 1, 1, 1},
          ColorAdjust{1, 0, 0, 1, 1, 1, -1}, ColorAdjust{1, 50, 5, 1, 1, 1, 0.001},
          ColorAdjust{1, -3, -7, 1, 1, 1, 1e300}}) {
        GammaCurve table;
        Gamma::fill(adjust, table);
        for (std::size_t i = 0; i < kGammaCurvePoints; ++i) {
            for (float v : {table.red[i], table.green[i], table.blue[i]})
                ASSERT_TRUE(v >= 0.0f && v <= 1.0f) << "entry " << i << " is " << v;
        }
    }
}

TEST(ColorAdjustJson, RoundTripsAndRejectsAnythingIncomplete) {
    const ColorAdjust adjust{0.4, 1.2, -0.5, 0.9, 1, 0.8, 2.2};
    const json encoded = adjust.toJson();
    EXPECT_EQ(encoded, json::parse(R"({"dim":0.4,"contrast":1.2,"temperature":-0.5,"red":0.9,
                                      "green":1.0,"blue":0.8,"gamma":2.2})"));
    EXPECT_EQ(ColorAdjust::fromJson(json::parse(encoded.dump())), adjust);
    json extra = ColorAdjust{}.toJson();
    extra["x"] = "y";
    extra["gamma"] = 3;  // integers are numbers too
    EXPECT_EQ(ColorAdjust::fromJson(extra), with(&ColorAdjust::gamma, 3));

    for (const char* key : {"dim", "contrast", "temperature", "red", "green", "blue", "gamma"}) {
        json missing = encoded;
        missing.erase(key);
        EXPECT_EQ(ColorAdjust::fromJson(missing), std::nullopt) << "without " << key;
        for (const json& wrong : {json("1"), json(INFINITY)}) {
            json bad = encoded;
            bad[key] = wrong;
            EXPECT_EQ(ColorAdjust::fromJson(bad), std::nullopt) << key << " = " << wrong;
        }
    }
    EXPECT_EQ(ColorAdjust::fromJson(json::array()), std::nullopt);
}

using GammaTest = test::DisplayScenario;

// The 256-point curve reaches displays whose ramps have another size resampled, ends kept.
TEST(GammaRamps, ResampledToTheDisplaysRampSize) {
    GammaCurve curve;
    Gamma::fill(with(&ColorAdjust::gamma, 2), curve);  // x squared
    for (std::size_t size : {2u, 3u, 1024u}) {
        const GammaRamps ramps = Gamma::resample(curve, size);
        ASSERT_EQ(ramps.green.size(), size);
        EXPECT_EQ(ramps.red.front(), 0.0f);
        EXPECT_FLOAT_EQ(ramps.blue.back(), 1.0f);
        const std::size_t mid = (size - 1) / 2;
        const double x = static_cast<double>(mid) / static_cast<double>(size - 1);
        EXPECT_NEAR(ramps.green[mid], x * x, 2e-5) << size;
    }
    EXPECT_TRUE(Gamma::resample(curve, 0).red.empty());
}

TEST_F(GammaTest, LoadsAdjustedDisplaysAndGivesTheOthersTheirOwnColourBack) {
    startFixture();
    Gamma gamma(*server);
    const ColorAdjust dimmed = with(&ColorAdjust::dim, 0.5);
    const ColorAdjust warm = with(&ColorAdjust::temperature, 1);
    auto ramps = [](const ColorAdjust& adjust) {
        GammaCurve curve;
        Gamma::fill(adjust, curve);
        return Gamma::resample(curve, 256);
    };
    gamma.applyAll({{2, dimmed}, {9, warm}});
    EXPECT_EQ(machine->gamma(2)->green, ramps(dimmed).green);
    EXPECT_EQ(machine->gamma(9)->blue, ramps(warm).blue);
    EXPECT_EQ(machine->gamma(5), std::nullopt);

    // 9 back to the identity: it shows its own colour again. An unknown display is harmless.
    gamma.applyAll({{2, dimmed}, {9, ColorAdjust{}}, {5, warm}, {77, warm}});
    EXPECT_EQ(machine->gamma(9), std::nullopt);
    EXPECT_EQ(machine->gamma(5)->red, ramps(warm).red);
    gamma.resetAll();
    for (DisplayID id : {2u, 5u, 9u})
        EXPECT_EQ(machine->gamma(id), std::nullopt) << id;
}

}  // namespace
}  // namespace lumora
