#include "ddc/DDCService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <tuple>

#include "DdcFakes.h"
#include "ddc/DdcPacket.h"
#include "sim/SimDdcMonitor.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using test::Bytes;
using test::kFailed;
using Reading = std::pair<std::uint16_t, std::uint16_t>;
// A transfer as the wire shows it: 'w' or 'r', milliseconds since a start, chip, data
// address, and the bytes written or a read's buffer of zeros.
using Wire = std::vector<std::tuple<char, long, int, int, Bytes>>;

constexpr double kStart = 1000.0;
const Bytes kSetBrightness{0x84, 0x03, 0x10, 0x01, 0x32, 0x9B};
const Bytes kGetBrightness{0x82, 0x01, 0x10, 0xAC};

// A valid reply, maximum 100: the checksum is the XOR of 0x50 and every byte before it.
Bytes reply(std::uint8_t code, std::uint8_t result, std::uint8_t current, std::uint8_t op = 0x02) {
    Bytes bytes{0x6E, 0x88, op, result, code, 0, 0, 100, 0, current, 0x50};
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i)
        bytes.back() ^= bytes[i];
    return bytes;
}

Wire wire(const test::ScriptedChannel& channel, double since = kStart) {
    Wire seen;
    for (const auto& t : channel.transfers()) {
        seen.emplace_back(t.kind == test::Transfer::Kind::read ? 'r' : 'w',
                          std::lround((t.time - since) * 1000), t.chip, t.dataAddress, t.bytes);
    }
    return seen;
}

// Read attempts at the default waits (50 ms quiet, 50 ms for the reply), from `ms` on.
Wire attempts(long ms, int count) {
    Wire expected;
    for (int i = 0; i < count; ++i, ms += 100) {
        expected.emplace_back('w', ms + 50, 0x37, 0x51, kGetBrightness);
        expected.emplace_back('r', ms + 100, 0x37, 0x51, Bytes(11, 0));
    }
    return expected;
}

class DDCServiceTest : public ::testing::Test {
  protected:
    DDCServiceTest() {
        const auto edid = sim::makeEdid(0x10AC, 0xA0B1, 0x12345678);
        channel->edid = Bytes(edid.begin(), edid.end());
    }
    std::shared_ptr<DDCService> open() { return DDCService::open(av, av.entries().front(), clock); }
    // Opened, with the EDID traffic forgotten.
    std::shared_ptr<DDCService> openQuietly() {
        auto service = open();
        channel->clear();
        return service;
    }

    sim::VirtualScheduler clock{kStart};
    test::FakeAVServices av{[this] { return clock.uptime(); }};
    std::shared_ptr<test::ScriptedChannel> channel = av.add(true);
};

TEST_F(DDCServiceTest, WriteSendsThePacketTwiceEachAfterTheQuietTime) {
    auto service = openQuietly();
    EXPECT_EQ(service->write(0x10, 0x0132), DdcWriteStatus::ok);
    EXPECT_EQ(wire(*channel), (Wire{{'w', 50, 0x37, 0x51, kSetBrightness},
                                    {'w', 100, 0x37, 0x51, kSetBrightness}}));
    // Either transmission taken is success; both are always sent.
    for (auto [first, second, status] :
         {std::tuple{kFailed, 0, DdcWriteStatus::ok}, std::tuple{0, kFailed, DdcWriteStatus::ok},
          std::tuple{kFailed, kFailed, DdcWriteStatus::noReply}}) {
        channel->clear();
        channel->queueWriteStatus(first);
        channel->queueWriteStatus(second);
        EXPECT_EQ(service->write(0x10, 0x0132), status);
        EXPECT_EQ(channel->transfers().size(), 2u);
    }
}

TEST_F(DDCServiceTest, ReadWaitsTheQuietTimeThenTheReplyWaitAndAnUnsupportedCodeIsAnAnswer) {
    auto service = openQuietly();
    channel->queueRead(0, reply(0x10, 0x00, 50));
    EXPECT_EQ(service->read(0x10), (Reading{50, 100}));
    EXPECT_EQ(wire(*channel), attempts(0, 1));

    // Result code 0x01: the monitor lacks the code. One attempt, no value.
    channel->clear();
    channel->reply = reply(0x10, 0x01, 0);
    EXPECT_EQ(service->readFeature(0x10).status, DdcReading::Status::unsupported);
    EXPECT_EQ(wire(*channel), attempts(100, 1));
}

TEST_F(DDCServiceTest, InvalidRepliesAreRetriedCountedAndNeverBecomeValues) {
    Bytes badChecksum = reply(0x62, 0, 17);
    badChecksum[9] ^= 0x04;  // one flipped bit: 21 instead of 17
    Bytes wrongLength = reply(0x62, 0, 17);
    wrongLength[1] = 0x87;
    const std::pair<const char*, Bytes> bad[] = {
        {"bad checksum", badChecksum},
        {"another code", reply(0x10, 0, 17)},
        {"wrong opcode", reply(0x62, 0, 17, 0x03)},
        {"wrong length", wrongLength},
        {"no data (all 0xFF)", Bytes(11, 0xFF)},
        {"null message", Bytes{0x6E, 0x80, 0xBE}},
    };
    const Bytes getVolume{0x82, 0x01, 0x62, 0xDE};
    for (const auto& [fault, bytes] : bad) {
        SCOPED_TRACE(fault);
        auto service = openQuietly();
        const double start = clock.uptime();
        channel->queueRead(0, bytes);
        channel->queueRead(0, reply(0x62, 0, 17));
        EXPECT_EQ(service->read(0x62), (Reading{17, 100}));
        EXPECT_EQ(wire(*channel, start), (Wire{{'w', 50, 0x37, 0x51, getVolume},
                                               {'r', 100, 0x37, 0x51, Bytes(11, 0)},
                                               {'w', 150, 0x37, 0x51, getVolume},
                                               {'r', 200, 0x37, 0x51, Bytes(11, 0)}}));
        EXPECT_EQ(service->counters().invalidReplies, 1u);

        // Invalid three times: the reason, and no value.
        channel->reply = bytes;
        const DdcReading reading = service->readFeature(0x62);
        EXPECT_EQ(reading.status, DdcReading::Status::invalidReply);
        EXPECT_EQ(reading.fault, fault);
        EXPECT_EQ(reading.current, 0u);
        EXPECT_EQ(service->counters().invalidReplies, 4u);
        channel->reply.reset();
    }
    // A refused request is not followed by a read; a refused read leaves no stale bytes
    // behind for the next attempt.
    auto service = openQuietly();
    const double start = clock.uptime();
    channel->queueWriteStatus(kFailed);
    channel->queueRead(0, reply(0x10, 0, 70));
    EXPECT_EQ(service->read(0x10), (Reading{70, 100}));
    Wire expected = attempts(50, 1);
    expected.emplace(expected.begin(), 'w', 50, 0x37, 0x51, kGetBrightness);
    EXPECT_EQ(wire(*channel, start), expected);
    channel->queueRead(kFailed, reply(0x10, 0, 50));
    channel->queueRead(0, {0x6E});
    channel->queueRead(0, {0x6E});
    EXPECT_EQ(service->readFeature(0x10).status, DdcReading::Status::invalidReply);
}

TEST_F(DDCServiceTest, EdidIsTriedThreeTimesTenMillisecondsApart) {
    const Wire threeReads{{'r', 0, 0x50, 0x00, Bytes(128, 0)},
                          {'r', 10, 0x50, 0x00, Bytes(128, 0)},
                          {'r', 20, 0x50, 0x00, Bytes(128, 0)}};
    channel->queueRead(kFailed, {});
    channel->queueRead(0, Bytes(128, 0xFF));  // went through, but no EDID header
    auto service = open();
    EXPECT_EQ(service->edidVendor(), 0x10ACu);
    EXPECT_EQ(service->edidProduct(), 0xA0B1u);
    EXPECT_EQ(service->edidSerial(), 0x12345678u);
    EXPECT_EQ(wire(*channel), threeReads);

    // Three bad reads leave zeros, after a pause behind each, and a usable channel.
    channel->clear();
    channel->edid.reset();
    auto blind = open();
    EXPECT_EQ(blind->edidVendor(), 0u);
    EXPECT_EQ(wire(*channel, kStart + 0.020), threeReads);
    EXPECT_NEAR(clock.uptime(), kStart + 0.050, 1e-9);
    EXPECT_EQ(blind->write(0x10, 0x0132), DdcWriteStatus::ok);
}

TEST_F(DDCServiceTest, MissingEntryPoints) {
    av.createEntry = false;
    EXPECT_EQ(open(), nullptr);
    av.createEntry = true;
    av.readEntry = false;
    auto noRead = open();
    EXPECT_EQ(noRead->edidVendor(), 0u) << "EDID skipped";
    EXPECT_EQ(noRead->read(0x10), std::nullopt);
    EXPECT_TRUE(channel->transfers().empty());
    EXPECT_EQ(noRead->write(0x10, 0x0132), DdcWriteStatus::ok)
        << "writing needs no read entry point";

    av.readEntry = true;
    av.writeEntry = false;
    auto noWrite = openQuietly();
    EXPECT_EQ(noWrite->write(0x10, 0x0132), DdcWriteStatus::noAccess);
    EXPECT_EQ(noWrite->read(0x10), std::nullopt);
    EXPECT_TRUE(channel->transfers().empty());
}

// Lets other threads run where a real exchange would wait.
class YieldingSleeper final : public Sleeper {
  public:
    void sleep(double) override { std::this_thread::yield(); }
};

TEST(DDCServiceThreads, TwoThreadsNeverInterleaveTheirPackets) {
    YieldingSleeper sleeper;
    test::FakeAVServices av{[] { return 0.0; }};
    auto channel = av.add(true);
    channel->reply = reply(0x10, 0, 50);
    auto service = DDCService::open(av, av.entries().front(), sleeper);
    channel->clear();

    constexpr int kRounds = 300;
    std::atomic<int> goodReads = 0;
    std::thread writer([&] {
        for (int i = 0; i < kRounds; ++i)
            service->write(0x10, 0x0132);
    });
    std::thread reader([&] {
        for (int i = 0; i < kRounds; ++i)
            goodReads += service->read(0x10) == Reading{50, 100};
    });
    writer.join();
    reader.join();
    EXPECT_EQ(goodReads, kRounds);

    // Each exchange is two transfers by one thread: write+write or request+reply.
    const auto wire = channel->transfers();
    ASSERT_EQ(wire.size(), 4u * kRounds);
    for (std::size_t i = 0; i < wire.size() && !HasFailure(); i += 2) {
        SCOPED_TRACE("transfer " + std::to_string(i));
        EXPECT_EQ(wire[i].thread, wire[i + 1].thread);
        const bool isWrite = wire[i].bytes == kSetBrightness;
        EXPECT_EQ(wire[i].bytes, isWrite ? kSetBrightness : kGetBrightness);
        EXPECT_EQ(wire[i + 1].bytes, isWrite ? kSetBrightness : Bytes(11, 0));
    }
}

// Packet details the wire tests above do not reach: a wide value's byte order and an empty bus.
TEST(DdcPacket, WideValuesAreBigEndianAndZerosAreNoEdid) {
    const auto packet = setVcpPacket(0x62, 0xABCD);
    EXPECT_EQ(std::vector<std::uint8_t>(packet.begin(), packet.end()),
              (std::vector<std::uint8_t>{0x84, 0x03, 0x62, 0xAB, 0xCD, 0xBC}));
    const std::uint8_t wide[] = {0x6E, 0x88, 0x02, 0x00, 0x62, 0x01, 0x12, 0x34, 0xAB, 0xCD, 0x97};
    EXPECT_EQ(parseVcpReply(wide, 0x62), (Reading{0xABCD, 0x1234}));
    EXPECT_EQ(parseEdidIds(std::vector<std::uint8_t>(128, 0)), std::nullopt) << "an empty bus";
}

}  // namespace
}  // namespace lumora
