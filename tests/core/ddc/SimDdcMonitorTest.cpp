#include "sim/SimDdcMonitor.h"

#include <gtest/gtest.h>

#include <numeric>

#include "DdcFakes.h"
#include "ddc/DdcPacket.h"

namespace lumora {
namespace {

using test::Bytes;

constexpr std::uint32_t kVendor = 0x10AC;
constexpr std::uint32_t kProduct = 0xA0B1;
constexpr std::uint32_t kSerial = 0x12345678;

sim::WorldDdc officeMonitor() {
    sim::WorldDdc ddc;
    ddc.vcp = {{0x10, {50, 100}}, {0x12, {75, 100}}, {0x62, {30, 100}}};
    return ddc;
}

class SimDdcMonitorTest : public ::testing::Test {
  protected:
    std::int32_t send(const Bytes& bytes) { return monitor.write(0x37, 0x51, bytes, now); }
    std::pair<std::int32_t, Bytes> receive(std::size_t size = 11) {
        Bytes buffer(size, 0);
        const auto status = monitor.read(0x37, 0x51, buffer, now);
        return {status, buffer};
    }
    std::uint16_t current(std::uint8_t code) { return monitor.vcp().at(code).first; }

    sim::SimDdcMonitor monitor{officeMonitor(), kVendor, kProduct, kSerial};
    double now = 1000.0;
};

TEST(SimEdid, HeaderNumbersVersionAndChecksum) {
    const auto edid = sim::makeEdid(kVendor, kProduct, kSerial);
    EXPECT_EQ(Bytes(edid.begin(), edid.begin() + 8),
              (Bytes{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00}));
    EXPECT_EQ(Bytes(edid.begin() + 8, edid.begin() + 16),
              (Bytes{0x10, 0xAC, 0xB1, 0xA0, 0x78, 0x56, 0x34, 0x12}));
    EXPECT_EQ(edid[18], 1);
    EXPECT_EQ(edid[19], 4);
    for (std::uint32_t serial : {0u, 1u, kSerial, 0xFFFFFFFFu}) {
        const auto e = sim::makeEdid(kVendor, kProduct, serial);
        EXPECT_EQ(std::accumulate(e.begin(), e.end(), 0u) % 256, 0u) << serial;
    }
}

TEST_F(SimDdcMonitorTest, ReplyIsReadyFortyMillisecondsAfterTheRequest) {
    const Bytes request{0x82, 0x01, 0x10, 0xAC};
    ASSERT_EQ(send(request), 0);
    now += 0.039;
    EXPECT_NE(receive().first, 0) << "too early";

    ASSERT_EQ(send(request), 0);
    now += 0.040;
    EXPECT_EQ(receive(),
              (std::pair<std::int32_t, Bytes>{
                  0, {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0xF2}}));
    EXPECT_NE(receive().first, 0) << "the read consumed the request";
}

TEST_F(SimDdcMonitorTest, ReadsWithoutARequestOrOnOtherChipsAreRefused) {
    EXPECT_NE(receive().first, 0);
    send({0x82, 0x01, 0x10, 0xAC});
    now += 0.05;
    Bytes buffer(11, 0);
    EXPECT_NE(monitor.read(0x38, 0x51, buffer, now), 0);
    EXPECT_NE(monitor.write(0x3A, 0x51, Bytes{0x82, 0x01, 0x10, 0xAC}, now), 0);
    EXPECT_EQ(buffer, Bytes(11, 0));
}

TEST_F(SimDdcMonitorTest, CodeItLacksIsAnsweredWithResultUnsupported) {
    send({0x82, 0x01, 0x16, 0xBC ^ 0x16});
    now += 0.05;
    const auto [status, reply] = receive();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(reply, (Bytes{0x6E, 0x88, 0x02, 0x01, 0x16, 0, 0, 0, 0, 0, 0xA3}));
}

TEST_F(SimDdcMonitorTest, SetVcpChangesTheValueUpToItsMaximum) {
    EXPECT_EQ(send({0x84, 0x03, 0x10, 0x00, 0x46, 0xB8 ^ 0x10 ^ 0x46}), 0);
    EXPECT_EQ(current(0x10), 70);
    send({0x84, 0x03, 0x10, 0x01, 0x32, 0x9B});
    EXPECT_EQ(current(0x10), 100) << "clamped";
    send({0x84, 0x03, 0x16, 0x00, 0x10, 0xB8 ^ 0x16 ^ 0x10});
    EXPECT_EQ(monitor.vcp().count(0x16), 0u) << "a code it lacks is not created";
}

TEST_F(SimDdcMonitorTest, MalformedPacketsAreAcknowledgedAndIgnored) {
    const std::vector<Bytes> malformed = {
        {0x84, 0x03, 0x10, 0x00, 0x46, 0x00},         // bad checksum
        {0x85, 0x03, 0x10, 0x00, 0x46, 0xB8 ^ 0x56},  // length byte says 5
        {0x04, 0x03, 0x10, 0x00, 0x46, 0xB8 ^ 0x56},  // no length flag
        {0x84, 0x03, 0x10, 0x00, 0x46},               // cut short
        {0x84},
        {},
    };
    for (const auto& packet : malformed) {
        EXPECT_EQ(send(packet), 0);
        EXPECT_EQ(current(0x10), 50);
    }
    // A request with a bad checksum leaves nothing to answer.
    send({0x82, 0x01, 0x10, 0xAD});
    now += 0.05;
    EXPECT_NE(receive().first, 0);
}

TEST_F(SimDdcMonitorTest, EdidIsReadFromChipFifty) {
    Bytes buffer(128, 0);
    ASSERT_EQ(monitor.read(0x50, 0x00, buffer, now), 0);
    const auto edid = sim::makeEdid(kVendor, kProduct, kSerial);
    EXPECT_EQ(buffer, Bytes(edid.begin(), edid.end()));
}

}  // namespace
}  // namespace lumora
