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
    EXPECT_TRUE(brightness.canSetBuiltin(5));
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
    EXPECT_FALSE(missing.canSetBuiltin(5));
}

// Entry points missing one by one, and failing statuses: the simulated machine offers the
// entry points all or nothing, and its calls always succeed.
class PartialBacklight final : public Backlight {
  public:
    bool get_ = true, set_ = true, can_ = true, canAnswer = true;
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

TEST(BrightnessEntryPoints, PartialEntryPointsAndFailedCalls) {
    PartialBacklight backlight;
    Brightness brightness(backlight);
    backlight.canAnswer = false;
    EXPECT_FALSE(brightness.canSetBuiltin(1));  // asked, and it said no
    backlight.can_ = false;
    EXPECT_TRUE(brightness.canSetBuiltin(1)) << "falls back to the setter's presence";

    backlight.status = -536870212;
    EXPECT_EQ(brightness.builtin(1), std::nullopt);
    EXPECT_FALSE(brightness.setBuiltin(1, std::numeric_limits<float>::infinity()));
    EXPECT_EQ(backlight.written, (std::vector<float>{1.0f}));
}

}  // namespace
}  // namespace lumora
