#include "ddc/DdcPacket.h"

#include <gtest/gtest.h>

#include <vector>

#include "ddc/VCP.h"

namespace lumora {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <std::size_t N>
Bytes bytesOf(const std::array<std::uint8_t, N>& a) {
    return Bytes(a.begin(), a.end());
}

TEST(DdcPacket, SetVcpPacketsCarryValueBigEndianAndChecksum) {
    EXPECT_EQ(bytesOf(setVcpPacket(0x10, 0x0132)), (Bytes{0x84, 0x03, 0x10, 0x01, 0x32, 0x9B}));
    EXPECT_EQ(bytesOf(setVcpPacket(0x62, 0xFFFF)), (Bytes{0x84, 0x03, 0x62, 0xFF, 0xFF, 0xDA}));
    EXPECT_EQ(bytesOf(setVcpPacket(0x12, 0)), (Bytes{0x84, 0x03, 0x12, 0x00, 0x00, 0xAA}));
}

TEST(DdcPacket, GetVcpRequestsCarryCodeAndChecksum) {
    EXPECT_EQ(bytesOf(getVcpRequest(0x10)), (Bytes{0x82, 0x01, 0x10, 0xAC}));
    EXPECT_EQ(bytesOf(getVcpRequest(0xD6)), (Bytes{0x82, 0x01, 0xD6, 0x6A}));
}

TEST(DdcPacket, ReplyGivesCurrentAndMaximumWhateverTheChecksum) {
    Bytes reply{0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0x00};
    EXPECT_EQ(parseVcpReply(reply, 0x10), (std::pair<std::uint16_t, std::uint16_t>{50, 100}));
    reply[10] = 0xEE;
    reply[1] = 0x00;  // length and type bytes are not checked either
    reply[5] = 0x01;
    EXPECT_EQ(parseVcpReply(reply, 0x10), (std::pair<std::uint16_t, std::uint16_t>{50, 100}));
    const Bytes wide{0x6E, 0x88, 0x02, 0x00, 0x62, 0x00, 0x12, 0x34, 0xAB, 0xCD, 0x00};
    EXPECT_EQ(parseVcpReply(wide, 0x62), (std::pair<std::uint16_t, std::uint16_t>{0xABCD, 0x1234}));
}

TEST(DdcPacket, RejectsRepliesThatAnswerSomethingElse) {
    const Bytes good{0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0xF2};
    struct Case {
        const char* what;
        std::size_t at;
        std::uint8_t value;
    };
    for (const Case& c : {Case{"not a feature reply", 2, 0x03}, Case{"unsupported code", 3, 0x01},
                          Case{"another code", 4, 0x12}}) {
        Bytes reply = good;
        reply[c.at] = c.value;
        EXPECT_EQ(parseVcpReply(reply, 0x10), std::nullopt) << c.what;
    }
    EXPECT_EQ(parseVcpReply(std::span(good).first(10), 0x10), std::nullopt) << "short";
    EXPECT_EQ(parseVcpReply({}, 0x10), std::nullopt) << "empty";
}

TEST(DdcPacket, EdidIdsReadVendorBigEndianProductAndSerialLittleEndian) {
    Bytes edid{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00,
               0x10, 0xAC, 0xB1, 0xA0, 0x78, 0x56, 0x34, 0x12};
    EXPECT_EQ(parseEdidIds(edid), (EdidIds{0x10AC, 0xA0B1, 0x12345678}));
    EXPECT_EQ(parseEdidIds(std::span(edid).first(15)), std::nullopt) << "serial cut off";
    edid[1] = 0xFE;
    EXPECT_EQ(parseEdidIds(edid), std::nullopt) << "not an EDID header";
    EXPECT_EQ(parseEdidIds(Bytes(128, 0)), std::nullopt) << "empty bus";
}

TEST(VCPCodes, OnlyTheNineKnownCodesMakeAVCP) {
    std::vector<std::uint8_t> known;
    for (int c = 0; c <= 0xFF; ++c) {
        auto vcp = vcpFromCode(static_cast<std::uint8_t>(c));
        if (!vcp) continue;
        EXPECT_EQ(code(*vcp), c);
        known.push_back(static_cast<std::uint8_t>(c));
    }
    EXPECT_EQ(known,
              (std::vector<std::uint8_t>{0x10, 0x12, 0x16, 0x18, 0x1A, 0x60, 0x62, 0x8D, 0xD6}));
    std::vector<std::string_view> names;
    for (VCP vcp : kAllVCP)
        names.push_back(name(vcp));
    EXPECT_EQ(names,
              (std::vector<std::string_view>{"brightness", "contrast", "redGain", "greenGain",
                                             "blueGain", "input", "volume", "mute", "power"}));
}

}  // namespace
}  // namespace lumora
