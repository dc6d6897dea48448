// The debounced lid state, the first decision at start-up, and every change of mode with the
// panel duties of open and closedExternal.
#include <gtest/gtest.h>

#include <limits>

#include "LidTrace.h"

namespace lumora {
namespace {

using namespace test;

TEST(LidState, DebounceBandAndImplausibleAngles) {
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}},
             {{1, 3}, {}},
             {{2, 10}, {}},  // back into the band: the attempt from t=1 is void
             {{2.5, 3}, {}},
             {{3.0, 3}, {}},   // would have closed had the attempt not restarted
             {{3.5, 16}, {}},  // open at once: this attempt is void too
             {{4, 6}, {}},     // just above closeAngle: no attempt at all
             {{10, 6}, {}},
             {{11, 5}, {}},  // closeAngle itself counts as closing
             {{12.4999, 5}, {}},
             {{12.5, 5}, closedAloneAwake("open", 5)}});
    EXPECT_TRUE(m.lidClosed());
    EXPECT_EQ(m.sleepDeadline(), 612.5);
    // Closed, in the band or without a reading: stays closed (the panel is asleep, so no
    // duties show).
    play(m, {{{13, 10, 0, true, true}, {}},
             {{14, 14, 0, true, true}, {}},
             {{15, std::nullopt, 0, true, true}, {}},
             {{16, 15, 0, true, true},
              {say("mode closedAlone -> open (angle 15, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay()}}});
    EXPECT_FALSE(m.lidClosed());

    // Angles above 300 are implausible and count as closed; the log shows them raw.
    play(m, {{{17, 300}, {}},
             {{18, 301}, {}},
             {{19.5, kMax}, closedAloneAwake("open", kMax)},
             {{20, 300, 0, true, true},
              {say("mode closedAlone -> open (angle 300, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay()}},
             {{21, kMin, -5, true, true}, {}},
             {{22.5, kMin, -5, true, true},
              {say("mode open -> closedAlone (angle -9223372036854775808, external -5)"),
               A::dimBuiltin(true)}}});
}

TEST(LidState, FirstDecisionNeverWakesAndWaitsForADebounceInProgress) {
    played({{{0, 80, 0, false},
             {say("mode unknown -> open (angle 80, external 0)"), A::setPanel(true)}}});
    played({{{0, std::nullopt, 2}, {say("mode unknown -> open (angle ?, external 2)")}}});

    LidMachine alone{LidConfig{}};
    play(alone, {{{0, 2}, {}}, {{1, 2}, {}}});
    EXPECT_EQ(alone.mode(), LidMode::unknown);
    play(alone, {{{1.5, 2}, closedAloneAwake("unknown", 2)}});

    played({{{0, 2}, {}}, {{0.5, 10}, {say("mode unknown -> open (angle 10, external 0)")}}});
}

TEST(LidState, ModesFollowTheExternalsAndThePanelIsRetriedEveryFiveSeconds) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80, 1}, {say("mode unknown -> open (angle 80, external 1)")}},
             {{1, 2, 1}, {}},
             {{2.5, 2, 1},
              {say("mode open -> closedExternal (angle 2, external 1)"), A::setPanel(false)}},
             {{7.4, 2, 1}, {}},
             {{7.5, 2, 1}, {A::setPanel(false)}},  // the first attempt did not take
             {{8, 2, 1, false}, {}},
             // Unplugged: the panel we switched off comes back first, at once.
             {{8.5, 2, 0, false},
              {say("mode closedExternal -> closedAlone (angle 2, external 0)"), A::setPanel(true)}},
             {{9, 2, 0}, {A::dimBuiltin(true), say(kFirstSleep), A::displaySleep()}},
             {{9.2, 2, 3},
              {say("mode closedAlone -> closedExternal (angle 2, external 3)"),
               A::dimBuiltin(false), A::setPanel(false)}},
             // Back within resleepInterval of the last display sleep: every duty starts over.
             {{9.5, 2, 0}, closedAloneAwake("closedExternal", 2)},
             {{9.7, 2, 1},
              {say("mode closedAlone -> closedExternal (angle 2, external 1)"),
               A::dimBuiltin(false), A::setPanel(false)}},
             // Opening brings the panel back at once, whenever the last panel command was.
             {{10, 80, 1, false},
              {say("mode closedExternal -> open (angle 80, external 1)"), A::wakeDisplay(),
               A::setPanel(true)}},
             {{14.9, 80, 1, false}, {}},
             {{15, 80, 1, false}, {A::setPanel(true)}},
             {{16, 2, 0}, {}},
             {{17.5, 2, 0}, closedAloneAwake("open", 2)},
             {{20, 80, 0, false},
              {say("mode closedAlone -> open (angle 80, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay(), A::setPanel(true)}}});
    EXPECT_FALSE(m.dimmedNow());
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);
}

}  // namespace
}  // namespace lumora
