#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

using nlohmann::json;

TEST(Power, AssertionsAreListedByNameUntilReleased) {
    Bench bench(defaultWorld());
    Power& power = bench.machine.power();
    const auto first =
        power.createAssertion("PreventUserIdleSystemSleep", "Lumora: external display connected");
    const auto second = power.createAssertion("PreventUserIdleDisplaySleep", "Lumora: test");
    EXPECT_GT(first, 0u);
    EXPECT_GT(second, first);
    EXPECT_EQ(bench.machine.state()["power"]["assertions"],
              json::parse(R"(["Lumora: external display connected", "Lumora: test"])"));
    power.releaseAssertion(first);
    power.releaseAssertion(first);
    EXPECT_EQ(bench.machine.state()["power"]["assertions"], json::parse(R"(["Lumora: test"])"));
}

TEST(Power, DisplaySleepRunsForTwoSecondsAndActivityWakes) {
    Bench bench(defaultWorld());
    Power& power = bench.machine.power();
    DisplayServer& server = bench.machine.displayServer();
    bench.machine.setOnline(3, false);

    auto spawned = power.spawn("/usr/bin/pmset", {"displaysleepnow"});
    ASSERT_TRUE(spawned.process);
    EXPECT_TRUE(spawned.error.empty());
    EXPECT_TRUE(server.isAsleep(1));
    EXPECT_TRUE(server.isAsleep(2));
    EXPECT_TRUE(spawned.process->running());
    bench.scheduler.advance(1.9);
    EXPECT_TRUE(spawned.process->running());
    bench.scheduler.advance(0.1);
    EXPECT_FALSE(spawned.process->running());

    // The unplugged projector did not go to sleep with the others.
    bench.machine.setOnline(3, true);
    EXPECT_FALSE(server.isAsleep(3));

    power.declareUserActivity("Lumora: lid opened");
    EXPECT_FALSE(server.isAsleep(1));
    EXPECT_FALSE(server.isAsleep(2));
    EXPECT_EQ(
        bench.machine.state()["power"],
        json::parse(
            R"({"assertions": [], "displaySleeps": 1, "systemSleeps": 0, "userActivity": 1})"));
}

TEST(Power, SystemSleepIsCountedAndOtherProgramsDoNotStart) {
    Bench bench(defaultWorld());
    Power& power = bench.machine.power();
    auto sleep = power.spawn("/usr/bin/pmset", {"sleepnow"});
    EXPECT_TRUE(sleep.process);
    EXPECT_FALSE(bench.machine.displayServer().isAsleep(1));

    auto other = power.spawn("/usr/bin/true", {});
    EXPECT_EQ(other.process, nullptr);
    EXPECT_EQ(other.error, "launch path not accessible");
    EXPECT_EQ(
        bench.machine.state()["power"],
        json::parse(
            R"({"assertions": [], "displaySleeps": 0, "systemSleeps": 1, "userActivity": 0})"));
}

}  // namespace
}  // namespace lumora::sim::test
