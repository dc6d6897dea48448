// Display control in the model: DDC discovery and the write debounce, brightness steps on the
// grid, the software floor, dim-to-black, and turning arguments and the pointer into displays.
#include <gtest/gtest.h>

#include "ModelScenario.h"

namespace lumora::test {
namespace {

using sim::SimOsd;
using Shown = std::vector<SimOsd::Shown>;

class DisplayControl : public ModelScenario {
  protected:
    void pointAt(DisplayID id) {
        const Rect r = machine->displayServer().bounds(id);
        machine->setPointer({r.origin.x + r.size.width / 2, r.origin.y + r.size.height / 2});
    }
};

TEST_F(DisplayControl, RescanCountsChannelsAndAnsweringMonitorsSeparately) {
    start("brokenDdc.json");
    EXPECT_TRUE(wasLogged("DDC: 3 external display(s) with a DDC channel, 2 answering"));
    EXPECT_EQ(model->ddcAvailable().get(), (std::set<DisplayID>{3, 4}));
    EXPECT_EQ(model->ddcValues()->at(2), (std::map<std::uint8_t, double>{}));
    EXPECT_EQ(model->ddcValues()->at(4),
              (std::map<std::uint8_t, double>{{0x10, 0.5}, {0x12, 0.75}, {0x62, 0.3}}));
    // The silent monitor falls back to software dimming, which never reaches black.
    EXPECT_EQ(model->brightness().level(2), 1.0);
    model->brightness().set(2, 0.0);
    EXPECT_EQ(model->color()->at(2).dim, BrightnessControl::kSoftwareDimFloor);
    EXPECT_EQ(model->brightness().level(2), 0.02);
}

TEST_F(DisplayControl, DraggedSliderWritesTheLastValueOfEachBurst) {
    start("laptopAndExternal.json");
    machine->clearWire();
    // 20 values in about 500 ms: moves 5 ms apart in six bursts, pauses of 85 ms between.
    int index = 0;
    for (int burst : {4, 4, 3, 3, 3, 3}) {
        for (int i = 0; i < burst; ++i, ++index) {
            const double level = (30 + index) / 100.0;
            model->brightness().set(2, level);
            EXPECT_EQ(model->ddcValues()->at(2).at(0x10), level);  // the cache follows at once
            if (i + 1 < burst) clock.advance(0.005);
        }
        clock.advance(0.085);
    }
    EXPECT_EQ(ddcWrites(0x10), (DdcWrites{{2, 33}, {2, 37}, {2, 40}, {2, 43}, {2, 46}, {2, 49}}));
    EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 49);

    // An even drag never pauses for 80 ms: one write, when it ends.
    machine->clearWire();
    for (int i = 0; i < 20; ++i) {
        model->brightness().set(2, (60 + i) / 100.0);
        clock.advance(0.025);
    }
    clock.advance(1.0);
    EXPECT_EQ(ddcWrites(0x10), (DdcWrites{{2, 79}}));
}

TEST_F(DisplayControl, EachDisplayAndControlHasItsOwnDebounce) {
    start("twinMonitors.json");
    machine->clearWire();
    model->brightness().set(2, 0.2);
    clock.advance(0.04);
    model->brightness().set(3, 0.3);
    model->ddc().set(2, VCP::contrast, 0.6, 100);
    clock.advance(0.02);
    model->brightness().set(2, 0.25);  // replaces only display 2's brightness write
    clock.advance(0.5);
    EXPECT_EQ(ddcWrites(0x10), (DdcWrites{{3, 30}, {2, 25}}));
    EXPECT_EQ(ddcWrites(0x12), (DdcWrites{{2, 60}}));
}

TEST_F(DisplayControl, StepsSnapToTheGridAndClampOnEveryPath) {
    start("laptopAndExternal.json");
    const auto stepFrom = [&](double level, bool up, bool fine) {
        model->brightness().set(2, level);
        model->brightness().step(2, up, fine);
        return model->brightness().level(2);
    };
    EXPECT_EQ(stepFrom(0.97, true, false), 1.0);
    EXPECT_EQ(stepFrom(0.01, false, false), 0.0);
    EXPECT_EQ(stepFrom(0.5, true, true), 0.515625);
    EXPECT_EQ(stepFrom(0.49, true, false), 0.5625);
    EXPECT_EQ(stepFrom(0.3, false, false), 0.25);
    EXPECT_EQ(machine->osd().shown(), (Shown{{2, 1.0, "sun.max.fill", {}},
                                             {2, 0.0, "sun.min.fill", {}},
                                             {2, 0.515625, "sun.max.fill", {}},
                                             {2, 0.5625, "sun.max.fill", {}},
                                             {2, 0.25, "sun.min.fill", {}}}));
    clock.advance(0.2);
    EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 25);

    // The software path keeps its floor; the on-screen display shows the step's level.
    machine->osd().clear();
    model->brightness().set(3, 0.03);
    model->brightness().step(3, false, false);
    EXPECT_EQ(model->brightness().level(3), 0.02);
    EXPECT_EQ(machine->osd().shown(), (Shown{{3, 0.0, "sun.min.fill", {}}}));
}

TEST_F(DisplayControl, DimToBlackAndBackRestoresTheFormerDim) {
    start("laptopAndExternal.json");
    ColorAdjust warm;
    warm.dim = 0.4;
    warm.temperature = 0.5;
    model->brightness().setColor(3, warm);
    pointAt(3);
    model->perform(ShortcutAction::dimToBlack);
    EXPECT_EQ(model->color()->at(3).dim, 0.0);
    EXPECT_EQ(stateOf(3)["gamma"]["red"][2], 0.0);
    model->perform(ShortcutAction::dimToBlack);
    EXPECT_EQ(model->color()->at(3), warm);
    EXPECT_EQ(machine->osd().shown(),
              (Shown{{3, 0.0, "moon.fill", {}}, {3, 0.4, "sun.max.fill", {}}}));
    // Persisted as decimal display id -> ColorAdjust.
    EXPECT_EQ(defaults.jsonData(kColorAdjustKey), (nlohmann::json{{"3", warm.toJson()}}));
}

TEST_F(DisplayControl, ResolveWordsIdsAndNames) {
    boot(sim::parseWorld(R"({"main": 5, "displays": [
        {"id": 4, "name": "Built-in Retina Display", "builtin": true,
         "modes": [{"id": 1, "width": 1512, "height": 982}]},
        {"id": 5, "name": "Рабочий МОНИТОР", "modes": [{"id": 1, "width": 1920, "height": 1080}]},
        {"id": 6, "name": "Écran Bureau", "modes": [{"id": 1, "width": 1920, "height": 1080}]}]})")
             .world.value());
    model->refresh();
    EXPECT_EQ(model->resolve("Main"), 5u);
    EXPECT_EQ(model->resolve("BUILTIN"), 4u);
    EXPECT_EQ(model->resolve("12345"), 12345u);  // taken as it is
    EXPECT_EQ(model->resolve("монитор"), 5u);
    EXPECT_EQ(model->resolve("4294967296"), std::nullopt);  // no id, and no name contains it
    pointAt(6);
    EXPECT_EQ(model->resolve(std::nullopt), 6u);
    EXPECT_EQ(model->resolve(""), 6u);
    EXPECT_EQ(model->resolve("Cursor"), 6u);
    machine->setPointer({-5000, -5000});
    EXPECT_EQ(model->resolve("cursor"), std::nullopt);
}

TEST_F(DisplayControl, PointerOnAMonitorInHiDPINamesTheMonitor) {
    start("laptopAndExternal.json");
    model->setHiDPI(2, true);
    clock.advance(AppModel::kHiDPISecondRefresh);
    const auto backing = model->hidpi().virtualFor(2);
    ASSERT_TRUE(backing);
    EXPECT_EQ(model->hidpiOn().get(), (std::set<DisplayID>{2}));

    pointAt(*backing);
    EXPECT_EQ(model->displayUnderCursor(), 2u);
    model->perform(ShortcutAction::toggleHiDPI);
    EXPECT_FALSE(model->hidpi().isOn(2));
    pointAt(2);  // back at 1x the monitor has a screen of its own again
    model->perform(ShortcutAction::toggleHiDPI);
    EXPECT_TRUE(model->hidpi().isOn(2));
    EXPECT_EQ(machine->osd().shown(), (Shown{{2, 0.0, "textformat.size", "1\u00D7"},
                                             {2, 1.0, "textformat.size", "HiDPI"}}));
}

}  // namespace
}  // namespace lumora::test
