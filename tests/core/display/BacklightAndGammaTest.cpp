#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "DisplayScenario.h"
#include "display/Brightness.h"
#include "display/Gamma.h"

namespace lumora {
namespace {

constexpr const char* kFixture = "laptopDockedMonitorAndProjector.json";

using GammaTest = test::DisplayScenario;

TEST_F(GammaTest, AppliesNonIdentityAdjustmentsAfterRestoringProfiles) {
    startFixture(kFixture);
    Gamma gamma(*server);
    ColorAdjust dimmed;
    dimmed.dim = 0.5;
    ColorAdjust warm;
    warm.temperature = 1;
    gamma.applyAll({{2, dimmed}, {9, warm}});
    EXPECT_EQ(machine->gamma(2)->green, Gamma::table(dimmed).green);
    EXPECT_EQ(machine->gamma(9)->blue, Gamma::table(warm).blue);
    EXPECT_EQ(machine->gamma(5), std::nullopt);

    // 9 back to the identity and 5 newly adjusted: 9 shows its profile again.
    gamma.applyAll({{2, dimmed}, {9, ColorAdjust{}}, {5, warm}});
    EXPECT_EQ(machine->gamma(9), std::nullopt);
    EXPECT_EQ(machine->gamma(5)->red, Gamma::table(warm).red);
    EXPECT_EQ(machine->state()["displays"].size(), 3u);

    gamma.applyAll({});
    for (DisplayID id : {2u, 5u, 9u})
        EXPECT_EQ(machine->gamma(id), std::nullopt) << id;
}

TEST_F(GammaTest, ResetAllRestoresEveryProfileAndUnknownDisplaysAreHarmless) {
    startFixture(kFixture);
    Gamma gamma(*server);
    ColorAdjust contrast;
    contrast.contrast = 2;
    gamma.applyAll({{2, contrast}, {5, contrast}, {77, contrast}});
    EXPECT_EQ(machine->gamma(2)->red[0], 0.0f);
    EXPECT_EQ(machine->gamma(2)->red[255], 1.0f);
    gamma.resetAll();
    EXPECT_EQ(machine->gamma(2), std::nullopt);
    EXPECT_EQ(machine->gamma(5), std::nullopt);
}

using BrightnessTest = test::DisplayScenario;

TEST_F(BrightnessTest, ReadsAndSetsThePanelClampingToTheUnitRange) {
    startFixture(kFixture);
    Brightness brightness(machine->backlight());
    EXPECT_TRUE(brightness.canSetBuiltin(5));
    EXPECT_EQ(brightness.builtin(5), 0.7f);

    EXPECT_TRUE(brightness.setBuiltin(5, 1.7f));
    EXPECT_EQ(brightness.builtin(5), 1.0f);
    EXPECT_TRUE(brightness.setBuiltin(5, -0.2f));
    EXPECT_EQ(brightness.builtin(5), 0.0f);
    EXPECT_TRUE(brightness.setBuiltin(5, 0.25f));
    EXPECT_EQ(machine->state()["displays"][1]["backlight"], 0.25);
    EXPECT_TRUE(brightness.setBuiltin(5, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(brightness.builtin(5), 0.0f);
}

TEST_F(BrightnessTest, ExternalDisplaysHaveNoBacklightToRead) {
    startFixture(kFixture);
    Brightness brightness(machine->backlight());
    EXPECT_EQ(brightness.builtin(2), std::nullopt);
    EXPECT_FALSE(brightness.setBuiltin(2, 0.5f));
}

TEST_F(BrightnessTest, MissingEntryPointsDisableEverything) {
    start(R"({ "backlightControl": false, "displays": [
      { "id": 5, "builtin": true, "backlight": 0.7,
        "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    Brightness brightness(machine->backlight());
    EXPECT_EQ(brightness.builtin(5), std::nullopt);
    EXPECT_FALSE(brightness.setBuiltin(5, 0.3f));
    EXPECT_FALSE(brightness.canSetBuiltin(5));
}

// Entry points missing one by one, which the simulated machine only offers all or nothing.
class PartialBacklight final : public Backlight {
  public:
    bool get_ = true, set_ = true, can_ = true;
    bool canAnswer = true;
    std::int32_t status = 0;
    float level = 0.5f;
    std::vector<float> written;

    bool hasGet() const override { return get_; }
    bool hasSet() const override { return set_; }
    bool hasCanChange() const override { return can_; }
    std::int32_t get(DisplayID, float& out) override {
        out = level;
        return status;
    }
    std::int32_t set(DisplayID, float value) override {
        written.push_back(value);
        return status;
    }
    bool canChange(DisplayID) override { return canAnswer; }
};

TEST(BrightnessEntryPoints, CanSetFallsBackToTheSetterWhenThePlatformCannotSay) {
    PartialBacklight backlight;
    Brightness brightness(backlight);
    backlight.canAnswer = false;
    EXPECT_FALSE(brightness.canSetBuiltin(1));  // asked, and it said no
    backlight.can_ = false;
    EXPECT_TRUE(brightness.canSetBuiltin(1));
    backlight.set_ = false;
    EXPECT_FALSE(brightness.canSetBuiltin(1));
    EXPECT_FALSE(brightness.setBuiltin(1, 0.5f));
    EXPECT_TRUE(backlight.written.empty());
}

TEST(BrightnessEntryPoints, FailedOrMeaninglessReadingsGiveNothing) {
    PartialBacklight backlight;
    Brightness brightness(backlight);
    EXPECT_EQ(brightness.builtin(1), 0.5f);
    backlight.status = -536870212;
    EXPECT_EQ(brightness.builtin(1), std::nullopt);
    EXPECT_FALSE(brightness.setBuiltin(1, 0.4f));
    EXPECT_EQ(backlight.written, (std::vector<float>{0.4f}));
    backlight.status = 0;
    backlight.level = std::nanf("");
    EXPECT_EQ(brightness.builtin(1), std::nullopt);
    backlight.level = 1.25f;
    EXPECT_EQ(brightness.builtin(1), 1.0f);
    backlight.get_ = false;
    backlight.level = 0.5f;
    EXPECT_EQ(brightness.builtin(1), std::nullopt);
}

TEST(BrightnessEntryPoints, SetterSeesClampedValues) {
    PartialBacklight backlight;
    Brightness brightness(backlight);
    for (float v : {1.7f, -0.2f, 0.0f, 1.0f, 0.3f, std::numeric_limits<float>::infinity(),
                    -std::numeric_limits<float>::infinity(), std::nanf("")}) {
        EXPECT_TRUE(brightness.setBuiltin(1, v));
    }
    EXPECT_EQ(backlight.written,
              (std::vector<float>{1.0f, 0.0f, 0.0f, 1.0f, 0.3f, 1.0f, 0.0f, 0.0f}));
}

}  // namespace
}  // namespace lumora
