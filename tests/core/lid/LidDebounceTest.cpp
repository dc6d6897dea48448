// The debounced lid state as seen through tick: debounce, hysteresis band, the implausible-angle
// guard, the start-up rule and readings far outside any plausible range.
#include <gtest/gtest.h>

#include <limits>

#include "LidTrace.h"

namespace lumora {
namespace {

using test::play;
using test::say;
using A = LidAction;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

test::Actions closedAloneAwake(const std::string& from, std::int64_t angle) {
    return {
        say("mode " + from + " -> closedAlone (angle " + std::to_string(angle) + ", external 0)"),
        A::dimBuiltin(true), say(test::kFirstSleep), A::displaySleep()};
}

TEST(LidDebounce, ClosesExactlyWhenTheDebounceHasElapsed) {
    LidMachine m{LidConfig{}};
    play(m, {{{-1, 10}, {say("mode unknown -> open (angle 10, external 0)")}},
             {{0, 3}, {}},
             {{1.0, 3}, {}},
             {{1.4999, 3}, {}}});
    EXPECT_FALSE(m.lidClosed());
    play(m, {{{1.5, 3}, closedAloneAwake("open", 3)}});
    EXPECT_TRUE(m.lidClosed());
    EXPECT_EQ(m.mode(), LidMode::closedAlone);
    EXPECT_EQ(m.sleepDeadline(), 601.5);
}

TEST(LidDebounce, BandRestartsAClosingAttemptAndKeepsAClosedLidClosed) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}},
             {{1, 3}, {}},
             {{2, 10}, {}},  // back into the band: the attempt from t=1 is void
             {{2.5, 3}, {}},
             {{3.0, 3}, {}},  // would have closed had the debounce not restarted
             {{3.9, 3}, {}},
             {{4.0, 3}, closedAloneAwake("open", 3)},
             // Closed and in the band (panel asleep, so no duties show): stays closed.
             {{5, 10, 0, true, true}, {}},
             {{6, 14, 0, true, true}, {}}});
    EXPECT_TRUE(m.lidClosed());
    play(m, {{{7, 15, 0, true, true},
              {say("mode closedAlone -> open (angle 15, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay()}}});
    EXPECT_FALSE(m.lidClosed());
}

TEST(LidDebounce, OpeningCancelsAClosingAttemptAndTheBandEdgesAreExact) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}},
             {{1, 3}, {}},
             {{2, 16}, {}},
             {{2.5, 3}, {}},
             {{3.5, 3}, {}},  // 1.0 s since the attempt restarted at 2.5
             {{4, 6}, {}},    // just above closeAngle: no closing attempt at all
             {{10, 6}, {}},
             {{11, 5}, {}},  // closeAngle itself counts as closing
             {{12.5, 5}, closedAloneAwake("open", 5)}});
}

TEST(LidDebounce, AnglesAbove300CountAsClosedWhile300IsOpen) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 300}, {say("mode unknown -> open (angle 300, external 0)")}},
             {{1, 301}, {}},
             // The log shows the raw reading, not the 0 it counted as.
             {{2.5, 301}, closedAloneAwake("open", 301)},
             {{3, 300, 0, true, true},
              {say("mode closedAlone -> open (angle 300, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay()}}});
}

TEST(LidDebounce, FirstDecisionAtStartUpNeverWakesTheDisplay) {
    LidMachine openLid{LidConfig{}};
    play(openLid, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}}});

    LidMachine panelOff{LidConfig{}};
    play(panelOff, {{{0, 80, 0, false},
                     {say("mode unknown -> open (angle 80, external 0)"), A::setPanel(true)}}});

    LidMachine noSensor{LidConfig{}};
    play(noSensor, {{{0, std::nullopt, 2}, {say("mode unknown -> open (angle ?, external 2)")}}});
}

TEST(LidDebounce, StartUpWhileClosingDecidesNothingUntilTheDebounceEnds) {
    LidMachine alone{LidConfig{}};
    play(alone, {{{0, 2}, {}}, {{1, 2}, {}}});
    EXPECT_EQ(alone.mode(), LidMode::unknown);
    play(alone, {{{1.5, 2}, closedAloneAwake("unknown", 2)}});

    LidMachine external{LidConfig{}};
    play(external,
         {{{0, 2, 1}, {}},
          {{1.5, 2, 1},
           {say("mode unknown -> closedExternal (angle 2, external 1)"), A::setPanel(false)}}});

    LidMachine reopened{LidConfig{}};
    play(reopened,
         {{{0, 2}, {}}, {{0.5, 10}, {say("mode unknown -> open (angle 10, external 0)")}}});
}

TEST(LidDebounce, MissingReadingKeepsTheLastLidState) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 2, 0, true, true}, {}},
             {{1.5, 2, 0, true, true},
              {say("mode unknown -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true)}},
             {{2, std::nullopt, 0, true, true}, {}},
             {{100, std::nullopt, 0, true, true}, {}}});
    EXPECT_TRUE(m.lidClosed());
    EXPECT_EQ(m.mode(), LidMode::closedAlone);
}

TEST(LidDebounce, ExtremeReadingsAndCountsNeverUpsetTheMachine) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, kMin, 0, true, true}, {}},
             {{0.5, -1, 0, true, true}, {}},
             {{1.5, kMax, 0, true, true},
              {say("mode unknown -> closedAlone (angle 9223372036854775807, external 0)"),
               A::dimBuiltin(true)}},
             {{2, kMax, kMax, true, true},
              {say("mode closedAlone -> closedExternal (angle 9223372036854775807, external "
                   "9223372036854775807)"),
               A::dimBuiltin(false), A::setPanel(false)}},
             {{3, kMin, -5, true, true},
              {say("mode closedExternal -> closedAlone (angle -9223372036854775808, external "
                   "-5)"),
               A::dimBuiltin(true)}}});
    EXPECT_TRUE(m.lidClosed());
}

}  // namespace
}  // namespace lumora
