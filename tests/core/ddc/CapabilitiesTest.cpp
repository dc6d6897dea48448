#include "ddc/DdcCapabilities.h"

#include <gtest/gtest.h>

#include "DdcFakes.h"
#include "ddc/DDCService.h"
#include "ddc/DdcPacket.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using test::Bytes;

// A fragment as a monitor sends it: 6E 80|(3+n) E3 offset data checksum(0x50 ^ ...).
Bytes fragment(std::uint16_t offset, std::string_view data) {
    Bytes bytes{0x6E, static_cast<std::uint8_t>(0x80 | (3 + data.size())), 0xE3,
                static_cast<std::uint8_t>(offset >> 8), static_cast<std::uint8_t>(offset & 0xFF)};
    bytes.insert(bytes.end(), data.begin(), data.end());
    std::uint8_t sum = 0x50;
    for (auto b : bytes)
        sum ^= b;
    bytes.push_back(sum);
    return bytes;
}

TEST(DdcCapabilities, TheStringIsReadByOffsetUntilAnEmptyFragmentAndBadFragmentsAreAskedAgain) {
    sim::VirtualScheduler clock{0};
    test::FakeAVServices av{[&] { return clock.uptime(); }};
    auto channel = av.add(true);
    auto service = DDCService::open(av, av.entries().front(), clock);
    channel->clear();
    Bytes corrupt = fragment(32, "cp(10 12))");
    corrupt[6] ^= 0x01;
    channel->queueRead(0, fragment(0, "(prot(monitor)type(lcd)model(X)v"));
    channel->queueRead(0, corrupt);
    channel->queueRead(0, fragment(0, "cp(10 12))"));  // the offset of the previous fragment
    channel->queueRead(0, fragment(32, "cp(10 12))"));
    channel->queueRead(0, fragment(42, ""));
    EXPECT_EQ(service->readCapabilities(), "(prot(monitor)type(lcd)model(X)vcp(10 12))");
    EXPECT_EQ(service->counters().invalidReplies, 2u);
    // 83 F3 offset-hi offset-lo checksum(0x6E ^ 0x51 ^ ...), each request with its reply.
    std::vector<Bytes> requests;
    for (const auto& t : channel->transfers()) {
        if (t.kind == test::Transfer::Kind::write) requests.push_back(t.bytes);
    }
    EXPECT_EQ(requests, (std::vector<Bytes>{{0x83, 0xF3, 0x00, 0x00, 0x4F},
                                            {0x83, 0xF3, 0x00, 0x20, 0x6F},
                                            {0x83, 0xF3, 0x00, 0x20, 0x6F},
                                            {0x83, 0xF3, 0x00, 0x20, 0x6F},
                                            {0x83, 0xF3, 0x00, 0x2A, 0x65}}));

    // A monitor without capabilities, or one whose fragments never check out: nothing.
    channel->clear();
    EXPECT_EQ(service->readCapabilities(), std::nullopt);
    channel->reply = corrupt;
    EXPECT_EQ(service->readCapabilities(), std::nullopt);
}

TEST(DdcCapabilities, ParsedForModelVersionAndCodesWithTheirValuesAndGarbageIsRefused) {
    const auto caps = parseCapabilities(
        "(prot(monitor)type(LCD)model(U2720Q)cmds(01 02 03 07 0C E3 F3)vcp(02 04 05 10 12 "
        "14(05 08 0B) 60(0F 11 12 1B) 62 D6(01 04))mccs_ver(2.1))\0\0");
    ASSERT_TRUE(caps);
    EXPECT_EQ(caps->model, "U2720Q");
    EXPECT_EQ(caps->mccs, "2.1");
    EXPECT_EQ(caps->vcp.size(), 9u);
    EXPECT_EQ(caps->vcp.at(0x60), (std::vector<std::uint8_t>{0x0F, 0x11, 0x12, 0x1B}));
    EXPECT_TRUE(caps->vcp.at(0x10).empty());
    EXPECT_FALSE(caps->lists(0x8D));
    // Codes run together and no outer parentheses, as some monitors write them.
    EXPECT_EQ(parseCapabilities("vcp(101262)")->vcp.size(), 3u);

    for (const char* garbage :
         {"", "(prot(monitor)", "vcp(10 12", "vcp(1G)", "vcp(10(0F(11)))", "model(x)", "vcp(10))(",
          "vcp(\x01\x02)", "((((((((((vcp(10))))))))))"}) {
        EXPECT_EQ(parseCapabilities(garbage), std::nullopt) << garbage;
    }
    EXPECT_EQ(inputSourceName(0x11), "HDMI 1");
    EXPECT_EQ(inputSourceName(0x0F), "DisplayPort 1");
    EXPECT_EQ(inputSourceName(0x1B), "0x1b");
}

}  // namespace
}  // namespace lumora
