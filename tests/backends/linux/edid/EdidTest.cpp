#include "edid/Edid.h"

#include <gtest/gtest.h>

#include "EdidBuilder.h"

namespace lumora::lx {
namespace {

using test::EdidSpec;
using test::makeEdid;
using Bytes = std::vector<std::uint8_t>;

Bytes corrupt(Bytes e, std::size_t at, std::uint8_t value) {
    e[at] = value;
    return e;
}

Bytes truncated(Bytes e, std::size_t size) {
    e.resize(size);
    return e;
}

// An extension block after the base block is ignored, whatever it holds.
Bytes withExtension(Bytes e) {
    e.resize(256, 0xAB);
    return e;
}

TEST(Edid, DecodesIdentityNamesAndSize) {
    const Bytes dell = makeEdid({.vendor = 0x10AC,
                                 .product = 0xA0C3,
                                 .serial = 0x4C4D3132,
                                 .name = "DELL U2720Q",
                                 .serialText = "8RXYZ13",
                                 .widthCm = 60,
                                 .heightCm = 34,
                                 .timingWidthMM = 597,
                                 .timingHeightMM = 336});
    const EdidInfo dellInfo{4268, 0xA0C3, 0x4C4D3132, "DELL U2720Q", "8RXYZ13", 600, 340};
    Bytes strange = makeEdid({.name = "Caf\xE9\x01 TV "});

    const struct {
        const char* what;
        Bytes edid;
        std::optional<EdidInfo> expected;
    } cases[] = {
        {"complete", dell, dellInfo},
        {"extension block", withExtension(dell), dellInfo},
        {"size from the detailed timing", makeEdid({.timingWidthMM = 1210, .timingHeightMM = 680}),
         EdidInfo{0x10AC, 0xA0C3, 0, std::nullopt, std::nullopt, 1210, 680}},
        {"no name descriptor", makeEdid({.product = 7, .serialText = "ABC"}),
         EdidInfo{0x10AC, 7, 0, std::nullopt, "ABC", 0, 0}},
        {"non-ASCII bytes dropped", strange, EdidInfo{0x10AC, 0xA0C3, 0, "Caf TV", {}, 0, 0}},
        {"blank name", makeEdid({.name = "   "}), EdidInfo{0x10AC, 0xA0C3, 0, {}, {}, 0, 0}},
        {"bad checksum", corrupt(dell, 127, static_cast<std::uint8_t>(dell[127] + 1)),
         std::nullopt},
        {"truncated", truncated(dell, 127), std::nullopt},
        {"checksum right, header wrong",
         corrupt(corrupt(dell, 0, 0x01), 127, static_cast<std::uint8_t>(dell[127] - 1)),
         std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseEdid(c.edid), c.expected) << c.what;
}

}  // namespace
}  // namespace lumora::lx
