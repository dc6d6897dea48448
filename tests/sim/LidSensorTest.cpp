#include <gtest/gtest.h>

#include "SimTestSupport.h"

namespace lumora::sim::test {
namespace {

struct Report {
    std::uint32_t page;
    std::uint32_t usage;
    std::int64_t value;
    friend bool operator==(const Report&, const Report&) = default;
};

const HidElement kAngle{kHidSensorPage, kHidLidAngleUsage, 1};

TEST(LidSensor, ReportsMovesOnTheMainQueueAndKeepsTheLastReportedValue) {
    Bench bench(defaultWorld());
    LidSensor& sensor = bench.machine.lidSensor();
    EXPECT_TRUE(sensor.elements().empty()) << "nothing before the manager opens";
    std::vector<Report> reports;
    ASSERT_EQ(sensor.open([&](std::uint32_t page, std::uint32_t usage, std::int64_t value) {
        reports.push_back({page, usage, value});
    }),
              0);
    const auto elements = sensor.elements();
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(elements[0], kAngle);
    EXPECT_EQ(sensor.getValue(elements[1], true), 1) << "the sensor state: ready";

    World moved = defaultWorld();
    moved.lid->angle = 40;
    bench.machine.applyWorld(moved);
    EXPECT_TRUE(reports.empty()) << "delivered on the main queue, not by the caller";
    bench.scheduler.runDue();
    EXPECT_EQ(reports, (std::vector<Report>{{kHidSensorPage, kHidLidAngleUsage, 40}}));
    bench.machine.applyWorld(moved);
    bench.scheduler.runDue();
    EXPECT_EQ(reports.size(), 1u) << "an unchanged angle is not reported";

    // A change the sensor misses: only asking the device sees it, and that refreshes the cache.
    bench.machine.setLidAngle(3, /*reported=*/false);
    bench.scheduler.runDue();
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_EQ(sensor.getValue(kAngle, false), 40);
    EXPECT_EQ(sensor.getValue(kAngle, true), 3);
    EXPECT_EQ(sensor.getValue(kAngle, false), 3);
    EXPECT_EQ(sensor.getValue({kHidSensorPage, kHidLidAngleUsage, 99}, true), std::nullopt);
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
    EXPECT_EQ(bare.machine.lidSensor().open([&](auto, auto, auto) { ++reports; }), 0);
    EXPECT_TRUE(bare.machine.lidSensor().elements().empty());
    EXPECT_EQ(bare.machine.lidSensor().getValue(kAngle, true), std::nullopt);
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
