#include "display/Brightness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "DisplayScenario.h"

namespace lumora {
namespace {

using BrightnessTest = test::DisplayScenario;

TEST_F(BrightnessTest, ReadsAndSetsThePanelClampedToTheUnitRange) {
    startFixture();
    Brightness brightness(machine->backlight());
    EXPECT_EQ(brightness.builtin(5), 0.7f);
    const std::pair<float, float> cases[] = {
        {1.7f, 1.0f}, {-0.2f, 0.0f}, {0.25f, 0.25f}, {std::nanf(""), 0.0f}};
    for (const auto& [level, stored] : cases) {
        EXPECT_TRUE(brightness.setBuiltin(5, level));
        EXPECT_EQ(brightness.builtin(5), stored) << level;
    }
    EXPECT_EQ(brightness.builtin(2), std::nullopt) << "an external display has no backlight";
    EXPECT_FALSE(brightness.setBuiltin(2, 0.5f));

    start(R"({ "backlightControl": false, "displays": [
      { "id": 5, "builtin": true, "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    Brightness missing(machine->backlight());
    EXPECT_EQ(missing.builtin(5), std::nullopt);
    EXPECT_FALSE(missing.setBuiltin(5, 0.3f));
}

// Failing statuses and readings out of range, which the simulated machine never gives.
class ScriptedBacklight final : public Backlight {
  public:
    std::int32_t status = 0;
    float level = 0.5f;
    std::vector<float> written;

    bool hasGet() const override { return true; }
    bool hasSet() const override { return true; }
    bool hasCanChange() const override { return false; }
    std::int32_t get(DisplayID, float& out) override {
        out = level;
        return status;
    }
    std::int32_t set(DisplayID, float value) override {
        written.push_back(value);
        return status;
    }
    bool canChange(DisplayID) override { return false; }
};

TEST(BrightnessFaults, ReadingsOutOfRangeAndFailedCalls) {
    ScriptedBacklight backlight;
    Brightness brightness(backlight);
    const std::pair<float, std::optional<float>> readings[] = {
        {1.5f, 1.0f}, {-0.5f, 0.0f}, {std::nanf(""), std::nullopt}};
    for (const auto& [reading, level] : readings) {
        backlight.level = reading;
        EXPECT_EQ(brightness.builtin(1), level) << reading;
    }
    backlight.level = 0.5f;
    backlight.status = -536870212;
    EXPECT_EQ(brightness.builtin(1), std::nullopt);
    EXPECT_FALSE(brightness.setBuiltin(1, std::numeric_limits<float>::infinity()));
    EXPECT_EQ(backlight.written, (std::vector<float>{1.0f}));
}

}  // namespace
}  // namespace lumora
