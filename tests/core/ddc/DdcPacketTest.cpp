// Packet details the DDCService wire tests do not reach: a wide value's byte order, the bytes
// a reply may get wrong, and the codes and names of the features.
#include "ddc/DdcPacket.h"

#include <gtest/gtest.h>

#include <vector>

#include "ddc/VCP.h"

namespace lumora {
namespace {

using Reading = std::pair<std::uint16_t, std::uint16_t>;

TEST(DdcPacket, WideValuesAreBigEndianSloppyReplyBytesPassAndZerosAreNoEdid) {
    const auto packet = setVcpPacket(0x62, 0xABCD);
    EXPECT_EQ(std::vector<std::uint8_t>(packet.begin(), packet.end()),
              (std::vector<std::uint8_t>{0x84, 0x03, 0x62, 0xAB, 0xCD, 0xBC}));
    // Length, type and checksum bytes are wrong here; monitors get them wrong too.
    const std::uint8_t reply[] = {0x6E, 0x00, 0x02, 0x00, 0x62, 0x01, 0x12, 0x34, 0xAB, 0xCD, 0xEE};
    EXPECT_EQ(parseVcpReply(reply, 0x62), (Reading{0xABCD, 0x1234}));
    EXPECT_EQ(parseVcpReply(reply, 0x10), std::nullopt);
    EXPECT_EQ(parseEdidIds(std::vector<std::uint8_t>(128, 0)), std::nullopt) << "an empty bus";
}

TEST(DdcPacket, OnlyTheNineKnownCodesMakeAVCP) {
    std::vector<std::string_view> names;
    for (int c = 0; c <= 0xFF; ++c) {
        if (auto vcp = vcpFromCode(static_cast<std::uint8_t>(c))) {
            EXPECT_EQ(code(*vcp), c);
            names.push_back(name(*vcp));
        }
    }
    EXPECT_EQ(names,
              (std::vector<std::string_view>{"brightness", "contrast", "redGain", "greenGain",
                                             "blueGain", "input", "volume", "mute", "power"}));
}

}  // namespace
}  // namespace lumora
