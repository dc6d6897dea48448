#include "ddc/DDCService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "DdcFakes.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using test::Bytes;
using test::kFailed;
using test::Transfer;
using Reading = std::pair<std::uint16_t, std::uint16_t>;

constexpr double kStart = 1000.0;
const Bytes kSetBrightness{0x84, 0x03, 0x10, 0x01, 0x32, 0x9B};
const Bytes kGetBrightness{0x82, 0x01, 0x10, 0xAC};

Bytes reply(std::uint8_t code, std::uint8_t result, std::uint16_t maximum, std::uint16_t current,
            std::uint8_t opcode = 0x02) {
    return {0x6E,
            0x88,
            opcode,
            result,
            code,
            0x00,
            static_cast<std::uint8_t>(maximum >> 8),
            static_cast<std::uint8_t>(maximum),
            static_cast<std::uint8_t>(current >> 8),
            static_cast<std::uint8_t>(current),
            0x5A};
}

// Transfers reduced to what the wire shows: kind, time, chip, data address, bytes.
struct Wire {
    Transfer::Kind kind;
    double time;
    std::uint8_t chip;
    std::uint8_t dataAddress;
    Bytes bytes;
};

void expectWire(const std::vector<Transfer>& seen, const std::vector<Wire>& expected) {
    ASSERT_EQ(seen.size(), expected.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        SCOPED_TRACE("transfer " + std::to_string(i));
        EXPECT_EQ(seen[i].kind, expected[i].kind);
        EXPECT_NEAR(seen[i].time, expected[i].time, 1e-9);
        EXPECT_EQ(seen[i].chip, expected[i].chip);
        EXPECT_EQ(seen[i].dataAddress, expected[i].dataAddress);
        EXPECT_EQ(seen[i].bytes, expected[i].bytes);
    }
}

constexpr auto W = Transfer::Kind::write;
constexpr auto R = Transfer::Kind::read;

class DDCServiceTest : public ::testing::Test {
  protected:
    DDCServiceTest() { channel->edid = test::edidWith(0x10AC, 0xA0B1, 0x12345678); }

    // Opens the channel and forgets the EDID traffic; returns the clock after opening.
    std::shared_ptr<DDCService> openQuietly() {
        auto service = DDCService::open(av, av.entries().front(), clock);
        channel->clear();
        return service;
    }
    // The pattern of one read attempt that got as far as reading, starting at t.
    static std::vector<Wire> attemptAt(double t) {
        return {{W, t + 0.010, 0x37, 0x51, kGetBrightness},
                {R, t + 0.060, 0x37, 0x51, Bytes(11, 0)}};
    }

    sim::VirtualScheduler clock{kStart};
    test::FakeAVServices av{[this] { return clock.uptime(); }};
    std::shared_ptr<test::ScriptedChannel> channel = av.add("External");
};

TEST_F(DDCServiceTest, WriteSendsThePacketTwiceTenMillisecondsApart) {
    auto service = openQuietly();
    EXPECT_TRUE(service->write(0x10, 0x0132));
    expectWire(channel->transfers(), {{W, kStart + 0.010, 0x37, 0x51, kSetBrightness},
                                      {W, kStart + 0.020, 0x37, 0x51, kSetBrightness}});
    EXPECT_NEAR(clock.uptime(), kStart + 0.020, 1e-9);
}

TEST_F(DDCServiceTest, WriteSucceedsWhenEitherTransmissionIsTaken) {
    auto service = openQuietly();
    struct Case {
        std::int32_t first, second;
        bool expected;
    };
    for (const Case& c :
         {Case{kFailed, 0, true}, Case{0, kFailed, true}, Case{kFailed, kFailed, false}}) {
        channel->clear();
        channel->queueWriteStatus(c.first);
        channel->queueWriteStatus(c.second);
        EXPECT_EQ(service->write(0x10, 0x0132), c.expected);
        EXPECT_EQ(channel->transfers().size(), 2u) << "always sent twice";
    }
}

TEST_F(DDCServiceTest, ReadSendsTheRequestAndParsesTheReplyFiftyMillisecondsLater) {
    auto service = openQuietly();
    channel->queueRead(0, reply(0x10, 0x00, 100, 50));
    EXPECT_EQ(service->read(0x10), (Reading{50, 100}));
    expectWire(channel->transfers(), attemptAt(kStart));
    EXPECT_NEAR(clock.uptime(), kStart + 0.060, 1e-9);
}

TEST_F(DDCServiceTest, UnsupportedCodeIsTriedExactlyThreeTimes) {
    auto service = openQuietly();
    channel->reply = reply(0x10, 0x01, 0, 0);
    EXPECT_EQ(service->read(0x10), std::nullopt);
    auto expected = attemptAt(kStart);
    for (double t : {kStart + 0.060, kStart + 0.120}) {
        auto more = attemptAt(t);
        expected.insert(expected.end(), more.begin(), more.end());
    }
    expectWire(channel->transfers(), expected);
    EXPECT_NEAR(clock.uptime(), kStart + 0.180, 1e-9);
}

TEST_F(DDCServiceTest, BadAttemptsAreRetriedUntilAGoodReply) {
    struct Case {
        const char* what;
        std::function<void(test::ScriptedChannel&)> spoil;
        std::size_t transfersOfBadAttempt;
    };
    const std::vector<Case> cases = {
        {"request refused", [](auto& c) { c.queueWriteStatus(kFailed); }, 1},
        {"read refused", [](auto& c) { c.queueRead(kFailed, reply(0x10, 0, 100, 50)); }, 2},
        {"wrong opcode", [](auto& c) { c.queueRead(0, reply(0x10, 0, 100, 50, 0x03)); }, 2},
        {"other code", [](auto& c) { c.queueRead(0, reply(0x12, 0, 100, 50)); }, 2},
        {"short read",
         [](auto& c) {
             c.queueRead(0, {0x6E, 0x88, 0x02});
         },
         2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto service = openQuietly();
        c.spoil(*channel);
        channel->queueRead(0, reply(0x10, 0, 100, 70));
        const double start = clock.uptime();
        EXPECT_EQ(service->read(0x10), (Reading{70, 100}));
        EXPECT_EQ(channel->transfers().size(), c.transfersOfBadAttempt + 2);
        const double badAttempt = c.transfersOfBadAttempt == 1 ? 0.010 : 0.060;
        EXPECT_NEAR(clock.uptime(), start + badAttempt + 0.060, 1e-9);
    }
}

TEST_F(DDCServiceTest, EveryAttemptStartsWithAFreshReplyBuffer) {
    auto service = openQuietly();
    // A refused read that still left a good reply behind, then reads that deliver too little:
    // stale bytes must never pass for an answer.
    channel->queueRead(kFailed, reply(0x10, 0, 100, 50));
    channel->queueRead(0, {0x6E});
    channel->queueRead(0, {0x6E});
    EXPECT_EQ(service->read(0x10), std::nullopt);
}

TEST_F(DDCServiceTest, OpeningReadsTheEdidNumbers) {
    auto service = DDCService::open(av, av.entries().front(), clock);
    ASSERT_TRUE(service);
    EXPECT_EQ(service->edidVendor(), 0x10ACu);
    EXPECT_EQ(service->edidProduct(), 0xA0B1u);
    EXPECT_EQ(service->edidSerial(), 0x12345678u);
    expectWire(channel->transfers(), {{R, kStart, 0x50, 0x00, Bytes(128, 0)}});
    EXPECT_NEAR(clock.uptime(), kStart, 1e-9);
}

TEST_F(DDCServiceTest, EdidGoodOnlyOnTheThirdTryAfterTwoPauses) {
    channel->queueRead(kFailed, {});
    channel->queueRead(0, Bytes(128, 0xFF));  // went through, but no EDID header
    auto service = DDCService::open(av, av.entries().front(), clock);
    ASSERT_TRUE(service);
    EXPECT_EQ(service->edidSerial(), 0x12345678u);
    expectWire(channel->transfers(), {{R, kStart, 0x50, 0x00, Bytes(128, 0)},
                                      {R, kStart + 0.010, 0x50, 0x00, Bytes(128, 0)},
                                      {R, kStart + 0.020, 0x50, 0x00, Bytes(128, 0)}});
}

TEST_F(DDCServiceTest, ThreeBadEdidReadsLeaveZerosAndAUsableChannel) {
    channel->edid.reset();
    auto service = DDCService::open(av, av.entries().front(), clock);
    ASSERT_TRUE(service);
    EXPECT_EQ(service->edidVendor(), 0u);
    EXPECT_EQ(service->edidProduct(), 0u);
    EXPECT_EQ(service->edidSerial(), 0u);
    EXPECT_EQ(channel->transfers().size(), 3u);
    EXPECT_NEAR(clock.uptime(), kStart + 0.030, 1e-9) << "the third failure pauses too";
    EXPECT_TRUE(service->write(0x10, 0x0132));
}

TEST_F(DDCServiceTest, MissingEntryPoints) {
    av.createEntry = false;
    EXPECT_EQ(DDCService::open(av, av.entries().front(), clock), nullptr);
    EXPECT_TRUE(av.created.empty());

    av.createEntry = true;
    test::FakeAVServices none{[] { return 0.0; }};
    none.add("External", false);
    EXPECT_EQ(DDCService::open(none, none.entries().front(), clock), nullptr) << "create fails";

    av.readEntry = false;
    auto noRead = DDCService::open(av, av.entries().front(), clock);
    ASSERT_TRUE(noRead);
    EXPECT_EQ(noRead->edidVendor(), 0u) << "EDID skipped";
    EXPECT_EQ(noRead->read(0x10), std::nullopt);
    EXPECT_TRUE(channel->transfers().empty());
    EXPECT_TRUE(noRead->write(0x10, 0x0132)) << "writing needs no read entry point";

    channel->clear();
    av.readEntry = true;
    av.writeEntry = false;
    auto noWrite = openQuietly();
    const double before = clock.uptime();
    EXPECT_FALSE(noWrite->write(0x10, 0x0132));
    EXPECT_EQ(noWrite->read(0x10), std::nullopt);
    EXPECT_TRUE(channel->transfers().empty());
    EXPECT_NEAR(clock.uptime(), before, 1e-9) << "fails at once";
}

// Lets other threads run where a real exchange would wait.
class YieldingSleeper final : public Sleeper {
  public:
    void sleep(double) override { std::this_thread::yield(); }
};

TEST(DDCServiceThreads, TwoThreadsNeverInterleaveTheirPackets) {
    YieldingSleeper sleeper;
    test::FakeAVServices av{[] { return 0.0; }};
    auto channel = av.add("External");
    channel->reply = reply(0x10, 0, 100, 50);
    auto service = DDCService::open(av, av.entries().front(), sleeper);
    ASSERT_TRUE(service);
    channel->clear();

    constexpr int kRounds = 300;
    std::atomic<int> goodReads = 0;
    std::thread writer([&] {
        for (int i = 0; i < kRounds; ++i)
            service->write(0x10, 0x0132);
    });
    std::thread reader([&] {
        for (int i = 0; i < kRounds; ++i) {
            if (service->read(0x10) == Reading{50, 100}) ++goodReads;
        }
    });
    writer.join();
    reader.join();
    EXPECT_EQ(goodReads, kRounds);

    // Each exchange is two transfers by one thread: write+write or request+reply.
    const auto wire = channel->transfers();
    ASSERT_EQ(wire.size(), 4u * kRounds);
    for (std::size_t i = 0; i < wire.size(); i += 2) {
        SCOPED_TRACE("transfer " + std::to_string(i));
        EXPECT_EQ(wire[i].thread, wire[i + 1].thread);
        EXPECT_EQ(wire[i].kind, W);
        if (wire[i].bytes == kSetBrightness) {
            EXPECT_EQ(wire[i + 1].bytes, kSetBrightness);
        } else {
            EXPECT_EQ(wire[i].bytes, kGetBrightness);
            EXPECT_EQ(wire[i + 1].kind, R);
        }
        if (HasFailure()) break;
    }
}

}  // namespace
}  // namespace lumora
