// The closed-alone duties (re-sleeping a woken display with a throttled log, the timed system
// sleep and its re-arm), didWake, and the configuration switches.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "LidTrace.h"

namespace lumora {
namespace {

using namespace test;

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

TEST(LidDuties, WokenDisplayIsPutBackToSleepWithALogLineAMinuteAndTheSystemAfter600s) {
    LidMachine m{LidConfig{}};
    play(m, {{{0, 2}, {}},
             {{1.5, 2}, closedAloneAwake("unknown", 2)},
             {{2.0, 2}, {}},  // within resleepInterval
             {{2.5, 2}, {say(wokeAgain(1)), A::displaySleep()}}});
    for (int second = 1; second < 60; ++second)
        play(m, {{{2.5 + second, 2}, {A::displaySleep()}}});
    play(m, {{{62.5, 2}, {say(wokeAgain(61)), A::displaySleep()}},
             // Closing again starts the count over; the minute of log silence carries on.
             {{70, 80},
              {say("mode closedAlone -> open (angle 80, external 0)"), A::dimBuiltin(false),
               A::wakeDisplay()}},
             {{71, 2}, {}},
             {{72.5, 2}, closedAloneAwake("open", 2)},
             {{73.5, 2}, {A::displaySleep()}},
             {{122.5, 2}, {say(wokeAgain(2)), A::displaySleep()}},
             {{672.4, 2, 0, true, true}, {}},
             {{672.5, 2, 0, true, true}, {say(kSystemSleep600), A::systemSleep()}},
             {{673, 2, 0, true, true}, {}}});
    EXPECT_EQ(m.sleepDeadline(), 1272.5);
    // A woken panel at the deadline: the re-sleep comes before the system sleep.
    play(m, {{{1272.5, 2},
              {say(wokeAgain(3)), A::displaySleep(), say(kSystemSleep600), A::systemSleep()}},
             // An offline panel is brought back first; the overdue deadline waits for it.
             {{1900, 2, 0, false}, {A::setPanel(true)}},
             {{1904, 2, 0, false}, {}},
             {{1905, 2, 0, false}, {A::setPanel(true)}},
             {{1906, 2, 0, true, true}, {say(kSystemSleep600), A::systemSleep()}}});
    EXPECT_EQ(m.sleepDeadline(), 2506.0);
}

TEST(LidDuties, DidWakeUsesTheShorterDelayAndLogLinesTruncateTheirDelays) {
    struct Case {
        double sleepDelay, wakeSleepDelay;
        const char* inText;              // "system sleep in ... s"
        std::optional<double> deadline;  // after waking at 100
        const char* closedText;          // "lid closed ... s", or nothing when sleep is off
    } cases[] = {
        {600, 60, "60", 160.0, "600"},
        {90.9, 60, "60", 160.0, "90"},
        {600, 59.9, "59", 100 + 59.9, "600"},
        {0, 60, "0", std::nullopt, nullptr},  // the message and the display sleep all the same
        {-10, 60, "-10", std::nullopt, nullptr},
        {1e300, -1e300, "-9223372036854775808", 100 - 1e300, "9223372036854775807"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.inText);
        LidConfig config;
        config.sleepDelay = c.sleepDelay;
        config.wakeSleepDelay = c.wakeSleepDelay;
        LidMachine m{config};
        closeAloneAsleep(m);
        EXPECT_EQ(m.didWake(100), (Actions{say(wokeClosed(c.inText)), A::displaySleep()}));
        EXPECT_EQ(m.sleepDeadline(), c.deadline);
        EXPECT_TRUE(m.dimmedNow());
        Actions slept;
        if (c.closedText) {
            slept = {say("lid closed " + std::string(c.closedText) +
                         " s without an external display: system sleep"),
                     A::systemSleep()};
        }
        play(m, {{{std::max(c.deadline.value_or(1e9), 101.0), 2, 0, true, true}, slept}});
    }
    LidMachine m{LidConfig{}};
    play(m, {{{0, 2}, {}}, {{1.5, 2}, closedAloneAwake("unknown", 2)}});
    m.didWake(2.0);
    play(m, {{{2.2, 2}, {say(wokeAgain(1)), A::displaySleep()}},  // no resleepInterval wait
             {{62.0, 2, 0, true, true}, {say(kSystemSleep600), A::systemSleep()}}});

    auto external = played(
        {{{0, 2, 1}, {}},
         {{1.5, 2, 1},
          {say("mode unknown -> closedExternal (angle 2, external 1)"), A::setPanel(false)}}});
    EXPECT_EQ(external.didWake(2), Actions{});
    EXPECT_EQ(external.sleepDeadline(), std::nullopt);
}

TEST(LidDutiesDeathTest, NonFiniteDelayInALogLineStopsDeliberately) {
    LidConfig config;
    config.sleepDelay = std::nan("");  // only code can build this; decoding rejects it
    LidMachine m{config};
    closeAloneAsleep(m);
    EXPECT_DEATH(m.didWake(5), "fatal programming error: truncating a non-finite delay");
}

TEST(LidDuties, ConfigurationSwitches) {
    LidConfig noDim;
    noDim.dimWhenClosed = false;
    auto plain = played(
        {{{0, 2}, {}},
         {{1.5, 2},
          {say("mode unknown -> closedAlone (angle 2, external 0)"), say(kFirstSleep),
           A::displaySleep()}},
         {{2, 80}, {say("mode closedAlone -> open (angle 80, external 0)"), A::wakeDisplay()}}},
        noDim);

    LidConfig keepOff;
    keepOff.disconnectBuiltinWhenExternal = true;
    played({{{0, 80, 1}, {say("mode unknown -> open (angle 80, external 1)"), A::setPanel(false)}},
            {{4.9, 80, 1}, {}},
            {{5, 80, 1}, {A::setPanel(false)}},
            {{6, 80, 1, false}, {}},
            // External gone: the panel comes back, but only once the retry is due again.
            {{7, 80, 0, false}, {}},
            {{10, 80, 0, false}, {A::setPanel(true)}}},
           keepOff);

    // Without clamshell use a closed lid means sleep, even with externals attached.
    LidConfig config;
    config.turnOffPanelWithExternal = false;
    LidMachine m{config};
    play(m, {{{0, 2, 1}, {}},
             {{1.5, 2, 1},
              {say("mode unknown -> closedAlone (angle 2, external 1)"), A::dimBuiltin(true),
               say(kFirstSleep), A::displaySleep()}}});
    m.update(LidConfig{}, 2);  // switches modes at the next tick
    play(m, {{{2, 2, 1},
              {say("mode closedAlone -> closedExternal (angle 2, external 1)"),
               A::dimBuiltin(false), A::setPanel(false)}}});
    m.update(config, 3);
    play(m,
         {{{3, 2, 1, false},
           {say("mode closedExternal -> closedAlone (angle 2, external 1)"), A::setPanel(true)}}});
    EXPECT_EQ(m.sleepDeadline(), 603.0);
    // Only in closedAlone does an update restart the countdown.
    config.sleepDelay = 100;
    m.update(config, 300);
    EXPECT_EQ(m.config(), config);
    EXPECT_EQ(m.sleepDeadline(), 400.0);
    config.sleepDelay = 0;
    m.update(config, 450);
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);
    plain.update(LidConfig{}, 10);
    EXPECT_EQ(plain.sleepDeadline(), std::nullopt);
}

}  // namespace
}  // namespace lumora
