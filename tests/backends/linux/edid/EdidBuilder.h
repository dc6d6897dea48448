#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lumora::lx::test {

// A monitor's EDID base block made to measure, with a correct checksum.
struct EdidSpec {
    std::uint16_t vendor = 0x10AC;
    std::uint16_t product = 0xA0C3;
    std::uint32_t serial = 0;
    std::optional<std::string> name{};
    std::optional<std::string> serialText{};
    std::uint8_t widthCm = 0;
    std::uint8_t heightCm = 0;
    std::uint16_t timingWidthMM = 0;  // image size of the first detailed timing
    std::uint16_t timingHeightMM = 0;
};

inline std::vector<std::uint8_t> makeEdid(const EdidSpec& s) {
    std::vector<std::uint8_t> e(128, 0);
    const std::uint8_t header[] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    std::copy(std::begin(header), std::end(header), e.begin());
    e[8] = static_cast<std::uint8_t>(s.vendor >> 8);
    e[9] = static_cast<std::uint8_t>(s.vendor);
    e[10] = static_cast<std::uint8_t>(s.product);
    e[11] = static_cast<std::uint8_t>(s.product >> 8);
    for (int i = 0; i < 4; ++i)
        e[12 + i] = static_cast<std::uint8_t>(s.serial >> (8 * i));
    e[18] = 1;  // EDID 1.4
    e[19] = 4;
    e[21] = s.widthCm;
    e[22] = s.heightCm;
    // First descriptor: a detailed timing (148.5 MHz) carrying the image size.
    e[54] = 0x02;
    e[55] = 0x3A;
    e[66] = static_cast<std::uint8_t>(s.timingWidthMM);
    e[67] = static_cast<std::uint8_t>(s.timingHeightMM);
    e[68] = static_cast<std::uint8_t>(((s.timingWidthMM >> 8) << 4) | (s.timingHeightMM >> 8));
    std::size_t at = 72;
    auto text = [&](std::uint8_t tag, const std::string& value) {
        e[at + 3] = tag;
        for (std::size_t i = 0; i < 13; ++i)
            e[at + 5 + i] = i < value.size()    ? static_cast<std::uint8_t>(value[i])
                            : i == value.size() ? std::uint8_t{'\n'}
                                                : std::uint8_t{' '};
        at += 18;
    };
    if (s.serialText) text(0xFF, *s.serialText);
    if (s.name) text(0xFC, *s.name);
    unsigned sum = 0;
    for (std::size_t i = 0; i < 127; ++i)
        sum += e[i];
    e[127] = static_cast<std::uint8_t>((256 - sum % 256) % 256);
    return e;
}

}  // namespace lumora::lx::test
