// The lid machine, driven by recorded samples: every step's actions are checked exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "lid/LidMachine.h"

namespace lumora {
namespace {

using Actions = std::vector<LidAction>;
using A = LidAction;

// One recorded sample. The panel is online and awake unless a step says otherwise.
struct Sample {
    double now = 0;
    std::optional<std::int64_t> angle;
    std::int64_t externals = 0;
    bool builtinOnline = true;
    bool builtinAsleep = false;
};

using Step = std::pair<Sample, Actions>;  // a sample and the actions it must give

// Feeds the samples in order and checks every step's actions exactly.
void play(LidMachine& machine, const std::vector<Step>& steps) {
    for (const auto& [s, expected] : steps) {
        SCOPED_TRACE("t=" + std::to_string(s.now));
        EXPECT_EQ(machine.tick({s.now, s.angle, s.externals, s.builtinOnline, s.builtinAsleep}),
                  expected);
    }
}

// A fresh machine fed the steps, for traces that start from nothing.
LidMachine played(const std::vector<Step>& steps, const LidConfig& config = {}) {
    LidMachine machine{config};
    play(machine, steps);
    return machine;
}

LidAction say(std::string message) {
    return LidAction::log(std::move(message));
}

constexpr const char* kFirstSleep = "lid closed, nothing external: display sleep";
constexpr const char* kSystemSleep600 =
    "lid closed 600 s without an external display: system sleep";

std::string wokeAgain(int sofar) {
    return "display woke with the lid closed (HID tickle): display sleep again (" +
           std::to_string(sofar) + " so far)";
}

// Entering closedAlone with the panel online and awake: every duty at once.
Actions closedAloneAwake(const std::string& from, std::int64_t angle) {
    return {
        say("mode " + from + " -> closedAlone (angle " + std::to_string(angle) + ", external 0)"),
        A::dimBuiltin(true), say(kFirstSleep), A::displaySleep()};
}

// Closed alone from t = 1.5 with the panel asleep: only the dim shows.
void closeAloneAsleep(LidMachine& m) {
    play(m, {{{0, 2, 0, true, true}, {}},
             {{1.5, 2, 0, true, true},
              {say("mode unknown -> closedAlone (angle 2, external 0)"), A::dimBuiltin(true)}}});
}

TEST(LidState, DebounceBandAndImplausibleAngles) {
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    LidMachine m{LidConfig{}};
    play(m, {{{0, 80}, {say("mode unknown -> open (angle 80, external 0)")}},
             {{1, 3}, {}},
             {{2, 10}, {}},   // back into the band: the attempt from t=1 is void
             {{2.5, 3}, {}},  // would have closed had the attempt not restarted
             {{4, 6}, {}},    // just above closeAngle: no attempt at all
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
    played({{{0, 2}, {}}, {{1, 2}, {}}, {{1.5, 2}, closedAloneAwake("unknown", 2)}});
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
             // Opening brings the panel back at once, whenever the last panel command was.
             {{10, 80, 1, false},
              {say("mode closedAlone -> open (angle 80, external 1)"), A::dimBuiltin(false),
               A::wakeDisplay(), A::setPanel(true)}},
             {{14.9, 80, 1, false}, {}},
             {{15, 80, 1, false}, {A::setPanel(true)}}});
    EXPECT_FALSE(m.dimmedNow());
    EXPECT_EQ(m.sleepDeadline(), std::nullopt);
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
        {1e300, -1e300, "-9223372036854775808", 100 - 1e300, "9223372036854775807"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.inText);
        LidConfig config;
        config.sleepDelay = c.sleepDelay;
        config.wakeSleepDelay = c.wakeSleepDelay;
        LidMachine m{config};
        closeAloneAsleep(m);
        EXPECT_EQ(m.didWake(100), (Actions{say("woke with the lid closed and nothing external: "
                                               "display stays dark, system sleep in " +
                                               std::string(c.inText) + " s"),
                                           A::displaySleep()}));
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
            // External gone: the panel comes back, but only once the retry is due again.
            {{3, 80, 0, false}, {}},
            {{5, 80, 0, false}, {A::setPanel(true)}}},
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
