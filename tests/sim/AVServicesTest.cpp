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

std::shared_ptr<AVChannel> externalChannel(SimMachine& machine, std::size_t index = 0) {
    std::size_t seen = 0;
    for (const auto& entry : machine.avServices().entries()) {
        if (entry.external && seen++ == index) return machine.avServices().create(entry);
    }
    return nullptr;
}

// One Get VCP Feature exchange as a host makes it: request, wait, read the reply.
Bytes getVcp(Bench& bench, AVChannel& channel, const Bytes& request) {
    EXPECT_EQ(channel.writeI2C(kDdcChip, kDdcAddress, request), 0);
    bench.scheduler.sleep(0.05);
    Bytes reply(11);
    EXPECT_EQ(channel.readI2C(kDdcChip, kDdcAddress, reply), 0);
    return reply;
}

TEST(AVServices, OneEntryPerChannelInWorldOrder) {
    Bench bench(defaultWorld());
    AVServices& av = bench.machine.avServices();
    EXPECT_TRUE(av.canCreate() && av.canRead() && av.canWrite());
    const auto entries = av.entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_FALSE(entries[0].external);
    EXPECT_TRUE(entries[1].external);
    EXPECT_NE(entries[0].handle, entries[1].handle);
    // The panel's own service has no monitor to talk to.
    EXPECT_EQ(av.create(entries[0]), nullptr);
    EXPECT_NE(av.create(entries[1]), nullptr);

    bench.machine.setOnline(2, false);
    ASSERT_EQ(av.entries().size(), 1u);
    EXPECT_EQ(av.create(entries[1]), nullptr);
}

TEST(AVServices, GetVcpExchangeIsAnsweredAndRecordedWithItsTimes) {
    Bench bench(defaultWorld());
    auto channel = externalChannel(bench.machine);
    ASSERT_TRUE(channel);
    const Bytes reply = getVcp(bench, *channel, kGetBrightness);
    const Bytes expected = {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32};
    EXPECT_EQ(Bytes(reply.begin(), reply.begin() + 10), expected);

    const auto wire = bench.machine.wire();
    ASSERT_EQ(wire.size(), 2u);
    EXPECT_EQ(wire[0].kind, WireEvent::Kind::write);
    EXPECT_DOUBLE_EQ(wire[0].time, 1000.0);
    EXPECT_EQ(wire[0].display, 2u);
    EXPECT_EQ(wire[0].chip, kDdcChip);
    EXPECT_EQ(wire[0].dataAddress, kDdcAddress);
    EXPECT_EQ(wire[0].bytes, kGetBrightness);
    EXPECT_EQ(wire[0].status, 0);
    EXPECT_EQ(wire[1].kind, WireEvent::Kind::read);
    EXPECT_DOUBLE_EQ(wire[1].time, 1000.05);
    EXPECT_EQ(wire[1].bytes, reply);

    bench.machine.clearWire();
    EXPECT_TRUE(bench.machine.wire().empty());
}

TEST(AVServices, EdidCarriesTheDisplayNumbers) {
    Bench bench(defaultWorld());
    auto channel = externalChannel(bench.machine);
    ASSERT_TRUE(channel);
    Bytes edid(128);
    EXPECT_EQ(channel->readI2C(0x50, 0x00, edid), 0);
    const auto expected = makeEdid(4268, 41234, 12345);
    EXPECT_EQ(edid, Bytes(expected.begin(), expected.end()));
}

TEST(AVServices, ChannelOfAnUnpluggedMonitorFails) {
    Bench bench(defaultWorld());
    auto channel = externalChannel(bench.machine);
    ASSERT_TRUE(channel);
    bench.machine.setOnline(2, false);
    EXPECT_NE(channel->writeI2C(kDdcChip, kDdcAddress, kGetBrightness), 0);
    Bytes reply(11);
    EXPECT_NE(channel->readI2C(kDdcChip, kDdcAddress, reply), 0);
    const auto wire = bench.machine.wire();
    ASSERT_EQ(wire.size(), 2u);
    EXPECT_NE(wire[0].status, 0);
    EXPECT_NE(wire[1].status, 0);

    // Plugged back in, the same channel works again.
    bench.machine.setOnline(2, true);
    EXPECT_EQ(getVcp(bench, *channel, kGetBrightness)[9], 50);
}

TEST(AVServices, TwinMonitorsEachAnswerOnTheirOwnChannel) {
    Bench bench(fixtureWorld("twinMonitors.json"));
    auto first = externalChannel(bench.machine, 0);
    auto second = externalChannel(bench.machine, 1);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(getVcp(bench, *first, kGetBrightness)[9], 40);
    EXPECT_EQ(getVcp(bench, *second, kGetBrightness)[9], 60);
}

TEST(AVServices, ChannelOutlivingTheMachineFailsQuietly) {
    std::shared_ptr<AVChannel> channel;
    {
        Bench bench(defaultWorld());
        channel = externalChannel(bench.machine);
    }
    ASSERT_TRUE(channel);
    EXPECT_NE(channel->writeI2C(kDdcChip, kDdcAddress, kGetBrightness), 0);
}

// The DDC queue's thread and the main thread use the machine at once.
TEST(AVServices, TrafficAndReconfigurationOnTwoThreads) {
    Bench bench(defaultWorld());
    auto channel = externalChannel(bench.machine);
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
