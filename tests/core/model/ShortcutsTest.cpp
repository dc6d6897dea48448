// Shortcuts and keys as the user meets them: global hotkeys running actions on the display
// under the pointer, recording a binding, and the brightness keys over each kind of display.
#include <gtest/gtest.h>

#include "ModelScenario.h"
#include "input/KeyCodes.h"

namespace lumora::test {
namespace {

using sim::SimOsd;
using Shown = std::vector<SimOsd::Shown>;
constexpr std::uint32_t kHyper = kMaskControl | kMaskOption | kMaskCommand;

class Shortcuts : public ModelScenario {
  protected:
    void SetUp() override { start("laptopAndExternal.json"); }

    void pointAt(DisplayID id) {
        const Rect r = machine->displayServer().bounds(id);
        machine->setPointer({r.origin.x + 10, r.origin.y + 10});
    }
    bool press(std::uint32_t keyCode, std::uint32_t modifiers) {
        const bool registered = machine->input().pressKeys(keyCode, modifiers);
        clock.runDue();
        return registered;
    }
    // A brightness key event through the tap; true when it was swallowed.
    bool brightnessKey(bool up, bool down, bool fine = false) {
        return machine->input().sendBrightnessKey(up, down, fine);
    }
    nlohmann::json storedShortcuts() { return *defaults.jsonData(kShortcutsKey); }
    static nlohmann::json plain(const nlohmann::ordered_json& json) {
        return nlohmann::json::parse(json.dump());
    }
};

TEST_F(Shortcuts, HotkeysActOnTheDisplayUnderThePointer) {
    pointAt(2);
    EXPECT_TRUE(press(kKeyUpArrow, kHyper));
    EXPECT_EQ(model->brightness().level(2), 0.5625);
    pointAt(3);
    EXPECT_TRUE(press(kKeyB, kHyper));
    EXPECT_EQ(model->brightness().level(3), 0.0);
    EXPECT_EQ(machine->osd().shown(),
              (Shown{{2, 0.5625, "sun.max.fill", {}}, {3, 0.0, "moon.fill", {}}}));

    // Over no display nothing runs, not even the actions that do not use the display.
    machine->setPointer({-9000, -9000});
    const auto before = machine->state();
    EXPECT_TRUE(press(kKeyDownArrow, kHyper));
    model->perform(ShortcutAction::sleepDisplays);
    model->perform(ShortcutAction::toggleBuiltin);
    EXPECT_EQ(machine->state(), before);
    EXPECT_EQ(machine->osd().shown().size(), 2u);
}

TEST_F(Shortcuts, ToggleBuiltinAndSleepDisplays) {
    pointAt(2);
    model->perform(ShortcutAction::toggleBuiltin);
    EXPECT_EQ(stateOf(1)["enabled"], false);
    EXPECT_FALSE(model->displays()->front().isOnline);
    model->perform(ShortcutAction::toggleBuiltin);
    EXPECT_EQ(stateOf(1)["enabled"], true);
    model->perform(ShortcutAction::sleepDisplays);
    EXPECT_EQ(machine->state()["power"]["displaySleeps"], 1);
    EXPECT_TRUE(machine->osd().shown().empty());
}

// What each key does while recording is the input layer's; here: the hot keys are released
// while recording, and what ends it is bound, saved and registered.
TEST_F(Shortcuts, RecordingSuspendsTheHotKeysAndItsOutcomeIsSavedAndRegistered) {
    ASSERT_EQ(machine->input().registrations().size(), 4u);
    EXPECT_FALSE(model->recordKey({kKeyA, {Modifier::control}, "a"}));  // not recording

    model->startRecording(ShortcutAction::dimToBlack);
    EXPECT_TRUE(machine->input().registrations().empty());
    EXPECT_TRUE(model->recordKey({kKeyEscape, {}, "\x1b"}));
    EXPECT_EQ(model->recording().get(), std::nullopt);
    EXPECT_EQ(machine->input().registrations().size(), 4u);
    EXPECT_EQ(storedShortcuts(), plain(encodeShortcuts(defaultShortcuts())));

    model->startRecording(ShortcutAction::toggleHiDPI);
    EXPECT_TRUE(model->recordKey({kKeyDelete, {}, ""}));
    EXPECT_FALSE(storedShortcuts().contains("toggleHiDPI"));
    EXPECT_EQ(machine->input().registrations().size(), 3u);
    EXPECT_FALSE(press(kKeyH, kHyper));

    model->startRecording(ShortcutAction::sleepDisplays);
    model->startRecording(ShortcutAction::sleepDisplays);  // restarting is harmless
    EXPECT_TRUE(model->recordKey({kKeyA, {Modifier::shift, Modifier::control}, "a"}));
    const Shortcut bound{kKeyA, kMaskControl | kMaskShift, "⌃⇧A"};
    EXPECT_EQ(model->shortcuts()->at(ShortcutAction::sleepDisplays), bound);
    EXPECT_EQ(storedShortcuts()["sleepDisplays"], plain(bound.toJson()));
    pointAt(2);
    EXPECT_TRUE(press(kKeyA, kMaskControl | kMaskShift));
    EXPECT_EQ(machine->state()["power"]["displaySleeps"], 1);
}

TEST_F(Shortcuts, BrightnessKeysStepExternalsAndLeaveThePanelToTheSystem) {
    pointAt(1);
    EXPECT_FALSE(brightnessKey(true, true));
    EXPECT_FALSE(brightnessKey(true, false));
    pointAt(2);
    EXPECT_TRUE(brightnessKey(true, true));
    EXPECT_TRUE(brightnessKey(true, false));
    EXPECT_TRUE(brightnessKey(true, true, /*fine=*/true));
    EXPECT_EQ(model->brightness().level(2), 0.578125);
    EXPECT_TRUE(brightnessKey(false, true));
    EXPECT_EQ(model->brightness().level(2), 0.5);

    model->setBrightnessKeys(false);
    EXPECT_EQ(defaults.boolean(kBrightnessKeysKey), false);
    EXPECT_FALSE(machine->input().tapInstalled());
    EXPECT_FALSE(model->brightnessKeyPressed(true, false));
    model->setBrightnessKeys(true);
    EXPECT_TRUE(brightnessKey(true, true));
    EXPECT_EQ(model->brightness().level(2), 0.5625);
}

}  // namespace
}  // namespace lumora::test
