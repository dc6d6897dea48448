#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

using nlohmann::json;

TEST(Power, InhibitionsAreListedByReasonWhileTheyLive) {
    Bench bench(defaultWorld());
    Power& power = bench.machine.power();
    auto first = power.inhibitIdleSleep("Lumora: external display connected");
    auto second = power.inhibitIdleSleep("Lumora: test");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(bench.machine.state()["power"]["assertions"],
              json::parse(R"(["Lumora: external display connected", "Lumora: test"])"));
    first.reset();
    EXPECT_EQ(bench.machine.state()["power"]["assertions"], json::parse(R"(["Lumora: test"])"));
}

// A second display sleep while the first is still under way does nothing: the promise the
// lid logic relies on.
TEST(Power, DisplaySleepIsNotRepeatedWhileUnderWayAndActivityWakes) {
    Bench bench(defaultWorld());
    Power& power = bench.machine.power();
    DisplayServer& server = bench.machine.displayServer();
    bench.machine.setOnline(3, false);

    EXPECT_TRUE(power.sleepDisplays().started);
    EXPECT_TRUE(server.isAsleep(1));
    EXPECT_TRUE(server.isAsleep(2));
    bench.scheduler.advance(1.9);
    EXPECT_TRUE(power.sleepDisplays().started);
    EXPECT_EQ(bench.machine.state()["power"]["displaySleeps"], 1);
    bench.scheduler.advance(0.1);
    power.sleepDisplays();
    EXPECT_EQ(bench.machine.state()["power"]["displaySleeps"], 2);

    // The unplugged projector did not go to sleep with the others.
    bench.machine.setOnline(3, true);
    EXPECT_FALSE(server.isAsleep(3));

    power.declareUserActivity("Lumora: lid opened");
    EXPECT_FALSE(server.isAsleep(1));
    EXPECT_TRUE(power.sleepSystem().started);
    EXPECT_EQ(
        bench.machine.state()["power"],
        json::parse(
            R"({"assertions": [], "displaySleeps": 2, "systemSleeps": 1, "userActivity": 1})"));
}

}  // namespace
}  // namespace lumora::sim::test
