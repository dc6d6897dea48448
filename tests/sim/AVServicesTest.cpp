#include <numeric>
#include <thread>

#include <gtest/gtest.h>

#include "SimTestSupport.h"
#include "sim/SimDdcMonitor.h"

namespace lumora::sim::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes kGetBrightness = {0x82, 0x01, 0x10, 0xAC};
constexpr std::uint8_t kDdcChip = 0x37;
constexpr std::uint8_t kDdcAddress = 0x51;

std::shared_ptr<AVChannel> monitorChannel(SimMachine& machine) {
    return machine.avServices().create(machine.avServices().entries().at(1));
}

TEST(AVServices, OneEntryPerChannelAndAChannelFailsWhileItsMonitorIsAway) {
    Bench bench(defaultWorld());
    AVServices& av = bench.machine.avServices();
    EXPECT_TRUE(av.canCreate() && av.canRead() && av.canWrite());
    const auto entries = av.entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_FALSE(entries[0].external);
    EXPECT_TRUE(entries[1].external);
    EXPECT_EQ(av.create(entries[0]), nullptr) << "the panel's own service has no monitor";
    auto channel = av.create(entries[1]);
    ASSERT_TRUE(channel);

    bench.machine.setOnline(2, false);
    EXPECT_EQ(av.entries().size(), 1u);
    EXPECT_EQ(av.create(entries[1]), nullptr);
    Bytes reply(11);
    EXPECT_NE(channel->writeI2C(kDdcChip, kDdcAddress, kGetBrightness), 0);
    EXPECT_NE(channel->readI2C(kDdcChip, kDdcAddress, reply), 0);
    ASSERT_EQ(bench.machine.wire().size(), 2u);
    EXPECT_NE(bench.machine.wire()[1].status, 0);

    // Plugged back in, the same channel answers again.
    bench.machine.setOnline(2, true);
    EXPECT_EQ(channel->writeI2C(kDdcChip, kDdcAddress, kGetBrightness), 0);
    bench.scheduler.sleep(0.05);
    EXPECT_EQ(channel->readI2C(kDdcChip, kDdcAddress, reply), 0);
    EXPECT_EQ(reply[9], 50);
}

// The monitor's firmware byte by byte; discovery and DDCService over the simulated machine are
// exercised end to end by the model's tests.
TEST(SimDdcMonitor, ReplyIsReadyFortyMillisecondsAfterTheRequestAndBadPacketsAreIgnored) {
    SimDdcMonitor monitor{WorldDdc{}, 0x10AC, 0xA0B1, 0x12345678};
    double now = 1000.0;
    const auto send = [&](const Bytes& bytes) {
        return monitor.write(kDdcChip, kDdcAddress, bytes, now);
    };
    const auto receive = [&] {
        Bytes buffer(11, 0);
        const auto status = monitor.read(kDdcChip, kDdcAddress, buffer, now);
        return std::pair{status, buffer};
    };
    ASSERT_EQ(send(kGetBrightness), 0);
    now += 0.039;
    EXPECT_NE(receive().first, 0) << "too early";
    ASSERT_EQ(send(kGetBrightness), 0);
    now += 0.040;
    EXPECT_EQ(receive(),
              (std::pair<std::int32_t, Bytes>{
                  0, {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0xF2}}));

    EXPECT_EQ(send({0x84, 0x03, 0x10, 0x00, 0x46, 0xEE}), 0);
    EXPECT_EQ(send({0x84, 0x03, 0x10, 0x00, 0x20, 0x00}), 0) << "a bad checksum, acknowledged";
    EXPECT_EQ(monitor.vcp().at(0x10).first, 70);
    send({0x82, 0x01, 0x10, 0xAD});  // a request with a bad checksum leaves nothing to answer
    now += 0.05;
    EXPECT_NE(receive().first, 0);

    const auto edid = makeEdid(0x10AC, 0xA0B1, 0xFFFFFFFF);
    EXPECT_EQ(std::accumulate(edid.begin(), edid.end(), 0u) % 256, 0u) << "the EDID's checksum";
}

TEST(AVServices, ChannelOutlivingTheMachineFailsQuietly) {
    std::shared_ptr<AVChannel> channel;
    {
        Bench bench(defaultWorld());
        channel = monitorChannel(bench.machine);
    }
    ASSERT_TRUE(channel);
    EXPECT_NE(channel->writeI2C(kDdcChip, kDdcAddress, kGetBrightness), 0);
}

// The DDC queue's thread and the main thread use the machine at once.
TEST(AVServices, TrafficAndReconfigurationOnTwoThreads) {
    Bench bench(defaultWorld());
    auto channel = monitorChannel(bench.machine);
    ASSERT_TRUE(channel);
    constexpr int kRounds = 200;
    std::thread ddc([&] {
        Bytes reply(11);
        for (int i = 0; i < kRounds; ++i) {
            channel->writeI2C(kDdcChip, kDdcAddress, kGetBrightness);
            channel->readI2C(kDdcChip, kDdcAddress, reply);
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        bench.machine.setOnline(3, i % 2 == 0);
        (void)bench.machine.state();
        (void)bench.machine.displayServer().onlineIDs();
    }
    ddc.join();
    EXPECT_EQ(bench.machine.wire().size(), 2u * kRounds);
}

}  // namespace
}  // namespace lumora::sim::test
