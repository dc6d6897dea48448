// The simulated lid sensor, system wake and power. The display sleep's pace, the sensor's
// absence and its polling are exercised end to end by the lid controller's tests
// (tests/core/lid).
#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

TEST(LidSensor, ReportsMovesOnTheMainQueueAndKeepsTheLastReportedValue) {
    Bench bench(defaultWorld());
    LidSensor& sensor = bench.machine.lidSensor();
    EXPECT_EQ(sensor.read(true), LidReading{}) << "nothing before the sensor opens";
    std::vector<LidReading> reports;
    ASSERT_EQ(sensor.open([&](const LidReading& r) { reports.push_back(r); }), 0);

    World moved = defaultWorld();
    moved.lid->angle = 40;
    bench.machine.applyWorld(moved);
    EXPECT_TRUE(reports.empty()) << "delivered on the main queue, not by the caller";
    bench.scheduler.runDue();
    bench.machine.applyWorld(moved);  // an unchanged angle is not reported
    bench.scheduler.runDue();
    EXPECT_EQ(reports, (std::vector<LidReading>{{40, std::nullopt}}));

    // A change the sensor misses: only asking the device sees it, and that refreshes the cache.
    bench.machine.setLidAngle(3, /*reported=*/false);
    bench.scheduler.runDue();
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_EQ(sensor.read(false).angle, 40);
    EXPECT_EQ(sensor.read(true).angle, 3);
    EXPECT_EQ(sensor.read(false).angle, 3);
}

TEST(SystemEvents, WakeWakesTheDisplaysThenNotifiesInOrder) {
    Bench bench(defaultWorld());
    SystemEvents& events = bench.machine.systemEvents();
    std::vector<std::string> heard;
    const auto wake = events.addObserver(SystemEvent::didWake, [&] { heard.push_back("wake"); });
    events.addObserver(SystemEvent::screensDidWake, [&] { heard.push_back("screens"); });
    bench.machine.setAsleep(1, true);

    bench.machine.simulateWake();
    EXPECT_FALSE(bench.machine.displayServer().isAsleep(1));
    EXPECT_TRUE(heard.empty());
    bench.scheduler.runDue();
    events.removeObserver(wake);
    bench.machine.simulateWake();
    bench.scheduler.runDue();
    EXPECT_EQ(heard, (std::vector<std::string>{"wake", "screens", "screens"}));
}

TEST(Power, DisplaySleepLeavesUnpluggedDisplaysAwakeAndUserActivityWakesThem) {
    Bench bench(defaultWorld());
    DisplayServer& server = bench.machine.displayServer();
    bench.machine.setOnline(3, false);
    EXPECT_TRUE(bench.machine.power().sleepDisplays().started);
    EXPECT_TRUE(server.isAsleep(2));
    bench.machine.setOnline(3, true);
    EXPECT_FALSE(server.isAsleep(3));
    bench.machine.power().declareUserActivity("Lumora: lid opened");
    EXPECT_FALSE(server.isAsleep(2));
}

}  // namespace
}  // namespace lumora::sim::test
