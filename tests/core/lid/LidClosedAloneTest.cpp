// The closed-alone duties: dimming, re-sleeping a woken display with a throttled log, the timed
// system sleep and its re-arm, didWake and configuration updates.
#include <gtest/gtest.h>

#include <cmath>

#include "LidTrace.h"

namespace lumora {
namespace {

using test::play;
using test::say;
using A = LidAction;

constexpr const char* kSystemSleep600 =
    "lid closed 600 s without an external display: system sleep";

std::string wokeAgain(int sofar) {
    return "display woke with the lid closed (HID tickle): display sleep again (" +
           std::to_string(sofar) + " so far)";
}

std::string wokeClosed(const std::string& seconds) {
    return "woke with the lid closed and nothing external: display stays dark, system sleep in " +
           seconds + " s";
}

// Closed alone from t = 1.5 with the panel asleep: only the dim shows.
void closeAloneAsleep(LidMachine& m) {
    play(m, {{{0, 2, 0, true, true}, {}},
             {{1.5, 2, 0, true, true},
              {say("mode unknown -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true)}}});
}

TEST(LidClosedAlone, WokenDisplayIsPutBackToSleepWithALogLineAMinute) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}},
             {{10, 2}, {}},
             {{11.5, 2},
              {say("mode open -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true),
               say(test::kFirstSleep), A::displaySleep()}},
             {{12.0, 2}, {}},  // within resleepInterval
             {{12.5, 2}, {say(wokeAgain(1)), A::displaySleep()}}});
    for (int second = 1; second < 60; ++second) {
        play(m, {{{12.5 + second, 2}, {A::displaySleep()}}});
    }
    play(m, {{{72.5, 2}, {say(wokeAgain(61)), A::displaySleep()}},
             {{73.5, 2, 0, true, true}, {}},
             {{74.5, 2}, {A::displaySleep()}}});

    // Closing again starts the count over; the minute of log silence carries on.
    play(m, {{{80, 80},
              {say("mode closedAlone -> open (angle 80, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay()}},
             {{81, 2}, {}},
             {{82.5, 2},
              {say("mode open -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true),
               say(test::kFirstSleep), A::displaySleep()}},
             {{83.5, 2}, {A::displaySleep()}},
             {{132.5, 2}, {say(wokeAgain(2)), A::displaySleep()}}});
}

TEST(LidClosedAlone, SystemSleepsAfterTheDelayAndReArms) {
    LidMachine m{LidConfig{}};
    closeAloneAsleep(m);
    EXPECT_EQ(m.sleepDeadline(), 601.5);
    play(m, {{{601.4, 2, 0, true, true}, {}},
             {{601.5, 2, 0, true, true}, {say(kSystemSleep600), A::systemSleep()}},
             {{602, 2, 0, true, true}, {}}});
    EXPECT_EQ(m.sleepDeadline(), 1201.5);
    // A woken panel at the deadline: the re-sleep comes before the system sleep.
    play(m,
         {{{1201.5, 2},
           {say(test::kFirstSleep), A::displaySleep(), say(kSystemSleep600), A::systemSleep()}}});
    EXPECT_EQ(m.sleepDeadline(), 1801.5);
}

TEST(LidClosedAlone, LogTruncatesTheDelayAndZeroOrNegativeDisablesIt) {
    LidConfig config;
    config.sleepDelay = 90.9;
    LidMachine fractional{config};
    closeAloneAsleep(fractional);
    play(fractional,
         {{{92.4, 2, 0, true, true},
           {say("lid closed 90 s without an external display: system sleep"), A::systemSleep()}}});

    for (double off : {0.0, -5.0}) {
        config.sleepDelay = off;
        LidMachine m{config};
        closeAloneAsleep(m);
        EXPECT_EQ(m.sleepDeadline(), std::nullopt);
        play(m, {{{1e9, 2, 0, true, true}, {}}});
    }
}

TEST(LidClosedAlone, OfflinePanelIsBroughtBackBeforeAnythingElseIncludingSystemSleep) {
    LidMachine m{LidConfig{}};
    closeAloneAsleep(m);
    play(m, {{{700, 2, 0, false}, {A::setPanel(true)}},
             {{702, 2, 0, false}, {}},
             {{705, 2, 0, false}, {A::setPanel(true)}},
             {{706, 2, 0, true, true}, {say(kSystemSleep600), A::systemSleep()}}});
    EXPECT_EQ(m.sleepDeadline(), 1306.0);
}

TEST(LidClosedAlone, DidWakeShortensTheCountdownAndResleepsAtOnce) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 2}, {}},
             {{1.5, 2},
              {say("mode unknown -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true),
               say(test::kFirstSleep), A::displaySleep()}}});
    EXPECT_EQ(m.didWake(2.0), (test::Actions{say(wokeClosed("60")), A::displaySleep()}));
    EXPECT_EQ(m.sleepDeadline(), 62.0);
    EXPECT_TRUE(m.dimmedNow());
    play(m, {{{2.2, 2}, {say(wokeAgain(1)), A::displaySleep()}},  // no resleepInterval wait
             {{62.0, 2, 0, true, true}, {say(kSystemSleep600), A::systemSleep()}}});
    EXPECT_EQ(m.sleepDeadline(), 662.0);
}

TEST(LidClosedAlone, DidWakeUsesTheShorterDelayAndSetsNoDeadlineWhenSleepIsOff) {
    struct Case {
        double sleepDelay;
        double wakeSleepDelay;
        std::string seconds;
        std::optional<double> deadline;
    } cases[] = {
        {0, 60, "0", std::nullopt},
        {-10, 60, "-10", std::nullopt},
        {30, 60, "30", 130.0},
        {600, 59.9, "59", 100 + 59.9},
        {1e300, 1e300, "9223372036854775807", 100 + 1e300},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.seconds);
        LidConfig config;
        config.sleepDelay = c.sleepDelay;
        config.wakeSleepDelay = c.wakeSleepDelay;
        LidMachine m{config};
        closeAloneAsleep(m);
        EXPECT_EQ(m.didWake(100), (test::Actions{say(wokeClosed(c.seconds)), A::displaySleep()}));
        EXPECT_EQ(m.sleepDeadline(), c.deadline);
    }
}

TEST(LidClosedAlone, HugeDelaysSaturateInLogLines) {
    LidConfig config;
    config.sleepDelay = 1e300;
    config.wakeSleepDelay = -1e300;
    LidMachine m{config};
    closeAloneAsleep(m);
    EXPECT_EQ(m.didWake(100),
              (test::Actions{say(wokeClosed("-9223372036854775808")), A::displaySleep()}));
    play(m, {{{101, 2, 0, true, true},
              {say("lid closed 9223372036854775807 s without an external display: system sleep"),
               A::systemSleep()}}});
}

TEST(LidClosedAlone, DidWakeOutsideClosedAloneDoesNothing) {
    LidMachine open{LidConfig{}};
    play(open, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}}});
    EXPECT_EQ(open.didWake(1), test::Actions{});
    EXPECT_EQ(open.sleepDeadline(), std::nullopt);

    LidMachine external{LidConfig{}};
    play(external,
         {{{0, 2, 1}, {}},
          {{1.5, 2, 1},
           {say("mode unknown -> closedExternal (angle 2, external 1)"), A::setPanel(false)}}});
    EXPECT_EQ(external.didWake(2), test::Actions{});
    EXPECT_EQ(external.sleepDeadline(), std::nullopt);
}

TEST(LidClosedAlone, UpdateRestartsTheCountdownOnlyWhenClosedAlone) {
    LidMachine m{LidConfig{}};
    closeAloneAsleep(m);
    LidConfig shorter;
    shorter.sleepDelay = 100;
    m.update(shorter, 300);
    EXPECT_EQ(m.config(), shorter);
    EXPECT_EQ(m.sleepDeadline(), 400.0);
    play(m,
         {{{399, 2, 0, true, true}, {}},
          {{400, 2, 0, true, true},
           {say("lid closed 100 s without an external display: system sleep"), A::systemSleep()}}});
    LidConfig off;
    off.sleepDelay = 0;
    m.update(off, 450);
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);

    LidMachine open{LidConfig{}};
    play(open, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}}});
    open.update(shorter, 10);
    EXPECT_EQ(open.sleepDeadline(), std::nullopt);
    EXPECT_EQ(open.config(), shorter);
}

TEST(LidClosedAloneDeathTest, NonFiniteDelayInALogLineStopsDeliberately) {
    LidConfig config;
    config.sleepDelay = std::nan("");  // only code can build this; decoding rejects it
    LidMachine m{config};
    closeAloneAsleep(m);
    EXPECT_DEATH(m.didWake(5), "fatal programming error: truncating a non-finite delay");
}

}  // namespace
}  // namespace lumora
