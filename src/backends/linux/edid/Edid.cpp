#include "edid/Edid.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace lumora::lx {

namespace {

constexpr std::array<std::uint8_t, 8> kHeader = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
constexpr std::size_t kVendorAt = 8;
constexpr std::size_t kProductAt = 10;
constexpr std::size_t kSerialAt = 12;
constexpr std::size_t kWidthCmAt = 21;
constexpr std::size_t kHeightCmAt = 22;
constexpr std::uint32_t kMMPerCm = 10;

// Four 18-byte descriptors; the first is the preferred detailed timing on most monitors.
constexpr std::array<std::size_t, 4> kDescriptorsAt = {54, 72, 90, 108};
constexpr std::size_t kDescriptorSize = 18;
// Display descriptors have a zero pixel clock (bytes 0-1) and byte 2; byte 3 is the tag.
constexpr std::size_t kTagAt = 3;
constexpr std::size_t kTextAt = 5;
constexpr std::size_t kTextSize = 13;
constexpr std::uint8_t kTagName = 0xFC;
constexpr std::uint8_t kTagSerial = 0xFF;
// Detailed timing: image size in mm, low bytes and a shared byte of high nibbles.
constexpr std::size_t kImageWidthAt = 12;
constexpr std::size_t kImageHeightAt = 13;
constexpr std::size_t kImageHighAt = 14;

using Bytes = std::span<const std::uint8_t>;

std::uint32_t littleEndian(Bytes b, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;)
        value = (value << 8) | b[at + i];
    return value;
}

bool isDisplayDescriptor(Bytes d) {
    return d[0] == 0 && d[1] == 0 && d[2] == 0;
}

bool isDetailedTiming(Bytes d) {
    return d[0] != 0 || d[1] != 0;
}

// Descriptor text: ASCII up to a line feed, padded with blanks. Anything outside printable
// ASCII is dropped so the name is always valid UTF-8.
std::optional<std::string> descriptorText(Bytes d) {
    std::string text;
    for (std::uint8_t c : d.subspan(kTextAt, kTextSize)) {
        if (c == '\n') break;
        if (c >= 0x20 && c < 0x7F) text.push_back(static_cast<char>(c));
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<std::string> textOf(Bytes edid, std::uint8_t tag) {
    for (std::size_t at : kDescriptorsAt) {
        Bytes d = edid.subspan(at, kDescriptorSize);
        if (isDisplayDescriptor(d) && d[kTagAt] == tag) return descriptorText(d);
    }
    return std::nullopt;
}

}  // namespace

bool edidChecksumValid(Bytes edid) {
    if (edid.size() < kEdidBlockSize) return false;
    const auto block = edid.first(kEdidBlockSize);
    return std::accumulate(block.begin(), block.end(), 0u) % 256 == 0;
}

std::optional<EdidInfo> parseEdid(Bytes edid) {
    if (!edidChecksumValid(edid) || !std::equal(kHeader.begin(), kHeader.end(), edid.begin()))
        return std::nullopt;
    EdidInfo info;
    info.vendor = (std::uint32_t{edid[kVendorAt]} << 8) | edid[kVendorAt + 1];
    info.product = littleEndian(edid, kProductAt, 2);
    info.serial = littleEndian(edid, kSerialAt, 4);
    info.name = textOf(edid, kTagName);
    info.serialText = textOf(edid, kTagSerial);
    if (edid[kWidthCmAt] != 0 && edid[kHeightCmAt] != 0) {
        info.widthMM = edid[kWidthCmAt] * kMMPerCm;
        info.heightMM = edid[kHeightCmAt] * kMMPerCm;
    } else if (Bytes timing = edid.subspan(kDescriptorsAt[0], kDescriptorSize);
               isDetailedTiming(timing)) {
        info.widthMM = timing[kImageWidthAt] | ((timing[kImageHighAt] & 0xF0u) << 4);
        info.heightMM = timing[kImageHeightAt] | ((timing[kImageHighAt] & 0x0Fu) << 8);
    }
    return info;
}

}  // namespace lumora::lx
