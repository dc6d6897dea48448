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
    EXPECT_EQ(reports, (std::vector<LidReading>{{40, std::nullopt}}));
    bench.machine.applyWorld(moved);
    bench.scheduler.runDue();
    EXPECT_EQ(reports.size(), 1u) << "an unchanged angle is not reported";

    // A change the sensor misses: only asking the device sees it, and that refreshes the cache.
    bench.machine.setLidAngle(3, /*reported=*/false);
    bench.scheduler.runDue();
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_EQ(sensor.read(false).angle, 40);
    EXPECT_EQ(sensor.read(true).angle, 3);
    EXPECT_EQ(sensor.read(false).angle, 3);
}

TEST(LidSensor, NoManagerOrNoDeviceAsTheWorldSays) {
    World noSensor = defaultWorld();
    noSensor.lid = WorldLid{false, true, 110};
    Bench missing(noSensor);
    EXPECT_EQ(missing.machine.lidSensor().open({}), std::nullopt);

    World noDevice = defaultWorld();
    noDevice.lid = WorldLid{true, false, 110};
    Bench bare(noDevice);
    int reports = 0;
    EXPECT_EQ(bare.machine.lidSensor().open([&](const LidReading&) { ++reports; }), 0);
    EXPECT_EQ(bare.machine.lidSensor().read(true), LidReading{});
    bare.machine.setLidAngle(0);
    bare.scheduler.runDue();
    EXPECT_EQ(reports, 0);
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
    EXPECT_EQ(heard, (std::vector<std::string>{"wake", "screens"}));

    events.removeObserver(wake);
    bench.machine.simulateWake();
    bench.scheduler.runDue();
    EXPECT_EQ(heard, (std::vector<std::string>{"wake", "screens", "screens"}));
}

}  // namespace
}  // namespace lumora::sim::test
