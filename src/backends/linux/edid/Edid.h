#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace lumora::lx {

// What a monitor tells about itself in the base block of its EDID.
struct EdidInfo {
    std::uint32_t vendor = 0;           // manufacturer id, big-endian as stored (Dell: 0x10AC)
    std::uint32_t product = 0;          // product code
    std::uint32_t serial = 0;           // serial number; 0 when the monitor leaves it out
    std::optional<std::string> name{};  // monitor name descriptor
    std::optional<std::string> serialText{};  // serial number descriptor
    std::uint32_t widthMM = 0;                // 0 when unknown
    std::uint32_t heightMM = 0;
    friend bool operator==(const EdidInfo&, const EdidInfo&) = default;
};

inline constexpr std::size_t kEdidBlockSize = 128;

// Whether the base block is complete and its bytes sum to 0 modulo 256.
[[nodiscard]] bool edidChecksumValid(std::span<const std::uint8_t> edid);

// Nothing for a truncated block, a wrong header or a wrong checksum: a damaged EDID would give
// a wrong identity, and callers fall back to the connector instead.
[[nodiscard]] std::optional<EdidInfo> parseEdid(std::span<const std::uint8_t> edid);

}  // namespace lumora::lx
