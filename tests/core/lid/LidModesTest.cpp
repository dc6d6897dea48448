// Changes of mode between open and the two closed modes, and the panel duties of open and
// closedExternal with their retry limit.
#include <gtest/gtest.h>

#include "LidTrace.h"

namespace lumora {
namespace {

using test::play;
using test::say;
using A = LidAction;

TEST(LidModes, ClamshellWithAnExternalTurnsThePanelOffAndRetriesEveryFiveSeconds) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80, 1}, {say("mode unknown -> open (angle 80, external 1)")}},
             {{1, 2, 1}, {}},
             {{2.5, 2, 1},
              {say("mode open -> closedExternal (angle 2, external 1)"), A::setPanel(false)}},
             {{3, 2, 1}, {}},
             {{7.4, 2, 1}, {}},
             {{7.5, 2, 1}, {A::setPanel(false)}},  // the first attempt did not take
             {{8, 2, 1, false}, {}},
             {{8.5, 2, 1, false}, {}}});
    EXPECT_EQ(m.mode(), LidMode::closedExternal);
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);
    // Opening wakes the displays and brings the panel back at once, although the last panel
    // command was less than five seconds ago.
    play(m, {{{9, 80, 1, false},
              {say("mode closedExternal -> open (angle 80, external 1)"), A::wakeDisplay(),
               A::setPanel(true)}},
             {{10, 80, 1, false}, {}},
             {{14, 80, 1, false}, {A::setPanel(true)}}});
}

TEST(LidModes, ExternalCountSwitchesBetweenTheClosedModes) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 2, 1}, {}},
             {{1.5, 2, 1},
              {say("mode unknown -> closedExternal (angle 2, external 1)"), A::setPanel(false)}},
             // Unplugged: the panel we switched off comes back first, immediately.
             {{2, 2, 0, false},
              {say("mode closedExternal -> closedAlone (angle 2, external 0)"), A::setPanel(true)}},
             {{3, 2, 0}, {A::dimBuiltin(true), say(test::kFirstSleep), A::displaySleep()}}});
    EXPECT_EQ(m.sleepDeadline(), 602.0);
    play(m, {{{3.2, 2, 3},
              {say("mode closedAlone -> closedExternal (angle 2, external 3)"),
               A::dimBuiltin(false), A::setPanel(false)}}});
    EXPECT_FALSE(m.dimmedNow());
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);
    // Back to closedAlone within resleepInterval of the last display sleep: every duty of the
    // state starts over at once, the first-sleep log line included.
    play(m, {{{3.5, 2, 0},
              {say("mode closedExternal -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true),
               say(test::kFirstSleep), A::displaySleep()}}});
    EXPECT_EQ(m.sleepDeadline(), 603.5);
}

TEST(LidModes, OpeningFromDimmedClosedAloneRestoresEverythingInOrder) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 2}, {}},
             {{1.5, 2},
              {say("mode unknown -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true),
               say(test::kFirstSleep), A::displaySleep()}}});
    EXPECT_TRUE(m.dimmedNow());
    play(m, {{{10, 80, 0, false},
              {say("mode closedAlone -> open (angle 80, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay(), A::setPanel(true)}}});
    EXPECT_FALSE(m.dimmedNow());
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);
}

TEST(LidModes, WithoutDimmingOpeningOnlyWakes) {
    LidConfig config;
    config.dimWhenClosed = false;
    LidMachine m{config};
    play(m,
         {{{0, 2}, {}},
          {{1.5, 2},
           {say("mode unknown -> closedAlone (angle 2, external 0)"), say(test::kFirstSleep),
            A::displaySleep()}},
          {{2, 80}, {say("mode closedAlone -> open (angle 80, external 0)"), A::wakeDisplay()}}});
}

TEST(LidModes, DisconnectBuiltinWhenExternalKeepsTheOpenPanelOff) {
    LidConfig config;
    config.disconnectBuiltinWhenExternal = true;
    LidMachine m{config};
    play(m, {{{0, 80, 1}, {say("mode unknown -> open (angle 80, external 1)"), A::setPanel(false)}},
             {{4.9, 80, 1}, {}},
             {{5, 80, 1}, {A::setPanel(false)}},
             {{6, 80, 1, false}, {}},
             // External gone: the panel comes back, but only once the retry is due again.
             {{7, 80, 0, false}, {}},
             {{10, 80, 0, false}, {A::setPanel(true)}}});
}

TEST(LidModes, WithoutClamshellUseAClosedLidMeansSleepEvenWithExternals) {
    LidConfig config;
    config.turnOffPanelWithExternal = false;
    LidMachine m{config};
    play(m, {{{0, 2, 1}, {}},
             {{1.5, 2, 1},
              {say("mode unknown -> closedAlone (angle 2, external 1)"), A::dimBuiltin(true),
               say(test::kFirstSleep), A::displaySleep()}}});
    EXPECT_EQ(m.mode(), LidMode::closedAlone);

    // Turning clamshell use on switches modes at the next tick.
    config.turnOffPanelWithExternal = true;
    m.update(config, 2);
    play(m, {{{2, 2, 1},
              {say("mode closedAlone -> closedExternal (angle 2, external 1)"),
               A::dimBuiltin(false), A::setPanel(false)}}});
    config.turnOffPanelWithExternal = false;
    m.update(config, 3);
    play(m,
         {{{3, 2, 1, false},
           {say("mode closedExternal -> closedAlone (angle 2, external 1)"), A::setPanel(true)}}});
    EXPECT_EQ(m.sleepDeadline(), 603.0);
}

}  // namespace
}  // namespace lumora
