// Registering shortcuts as global hot keys and delivering presses on the main queue.
#include <gtest/gtest.h>

#include "core/log/TestLog.h"
#include "input/Hotkeys.h"
#include "input/KeyCodes.h"
#include "sim/SimInput.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using A = ShortcutAction;
using R = sim::SimInput::Registration;
using Strings = std::vector<std::string>;

constexpr std::uint32_t kCtrlOptCmd = 0x1900;

class HotkeysTest : public ::testing::Test, protected test::TestLog {
  protected:
    HotkeysTest() {
        hotkeys->onAction = [this](A action) { fired.push_back(action); };
    }
    sim::VirtualScheduler clock;
    sim::SimInput input{true};
    std::unique_ptr<Hotkeys> hotkeys = std::make_unique<Hotkeys>(input, clock, log);
    std::vector<A> fired;
};

TEST_F(HotkeysTest, IdsCountFromOneInMapOrderAndARefusalUsesItsNumberUp) {
    input.takeByAnotherApp(kKeyDownArrow, kCtrlOptCmd);
    hotkeys->registerShortcuts(defaultShortcuts());
    EXPECT_EQ(input.registrations(), (std::vector<R>{{kKeyUpArrow, kCtrlOptCmd, 1},
                                                     {kKeyB, kCtrlOptCmd, 3},
                                                     {kKeyH, kCtrlOptCmd, 4}}));
    input.press(2);  // the refused number maps to nothing
    EXPECT_TRUE(input.pressKeys(kKeyH, kCtrlOptCmd));
    clock.runDue();
    EXPECT_EQ(fired, std::vector<A>{A::toggleHiDPI});

    // Of two actions on the same keys the first in action order wins.
    hotkeys->registerShortcuts(
        {{A::sleepDisplays, {kKeyA, 0x100, "⌘A"}}, {A::toggleBuiltin, {kKeyA, 0x100, "⌘A"}}});
    EXPECT_EQ(input.registrations(), (std::vector<R>{{kKeyA, 0x100, 1}}));
    input.pressKeys(kKeyA, 0x100);
    clock.runDue();
    EXPECT_EQ(fired, (std::vector<A>{A::toggleHiDPI, A::toggleBuiltin}));
    EXPECT_EQ(logged(), (Strings{"shortcut ⌃⌥⌘↓ for brightnessDown is taken by another app",
                                 "shortcut ⌘A for sleepDisplays is taken by another app"}));
}

TEST_F(HotkeysTest, RegisteringAgainReleasesTheOldRegistrationsFirst) {
    hotkeys->registerShortcuts(defaultShortcuts());
    const auto first = input.registrations();
    ASSERT_EQ(first.size(), 4u);
    hotkeys->registerShortcuts(defaultShortcuts());
    // Were the old ones kept, the system would refuse every combination the second time.
    EXPECT_EQ(input.registrations(), first);
    EXPECT_EQ(logged(), Strings{});

    hotkeys->registerShortcuts({});
    EXPECT_EQ(input.registrations(), std::vector<R>{});
    EXPECT_FALSE(input.pressKeys(kKeyUpArrow, kCtrlOptCmd));
    for (std::uint32_t id : {0u, 1u, 2u, 99u})
        input.press(id);
    clock.runDue();
    EXPECT_EQ(fired, std::vector<A>{});
}

TEST_F(HotkeysTest, PressesArriveOnlyWhenTheMainQueueRunsAndNeverAfterTheRegistryIsGone) {
    hotkeys->registerShortcuts(defaultShortcuts());
    input.pressKeys(kKeyB, kCtrlOptCmd);
    input.pressKeys(kKeyUpArrow, kCtrlOptCmd);
    EXPECT_EQ(fired, std::vector<A>{});
    clock.runDue();
    EXPECT_EQ(fired, (std::vector<A>{A::dimToBlack, A::brightnessUp}));
    hotkeys->onAction = nullptr;  // no callback: the press is simply dropped
    input.pressKeys(kKeyB, kCtrlOptCmd);
    clock.runDue();

    hotkeys->onAction = [this](A action) { fired.push_back(action); };
    input.pressKeys(kKeyB, kCtrlOptCmd);
    hotkeys.reset();
    clock.runDue();  // under ASan a delivery through the dead registry would be caught here
    input.press(1);
    EXPECT_EQ(fired.size(), 2u);
    EXPECT_EQ(input.registrations(), std::vector<R>{});
}

}  // namespace
}  // namespace lumora
