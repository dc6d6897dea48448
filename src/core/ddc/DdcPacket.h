#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace lumora {

// DDC/CI over I2C: the monitor's control processor and its EDID memory (7-bit chip addresses).
inline constexpr std::uint8_t kDdcChip = 0x37;
// The first byte of every host message: the host's source address.
inline constexpr std::uint8_t kDdcDataAddress = 0x51;
inline constexpr std::uint8_t kEdidChip = 0x50;
inline constexpr std::uint8_t kEdidDataAddress = 0x00;

// The monitor's 8-bit write address. It and the source address enter the checksum but are
// not part of the buffer handed to the platform.
inline constexpr std::uint8_t kDdcDestination = 0x6E;
// Marks the length byte of a message: 0x80 | number of bytes that follow, checksum excluded.
inline constexpr std::uint8_t kDdcLengthFlag = 0x80;

inline constexpr std::uint8_t kGetVcpOpcode = 0x01;
inline constexpr std::uint8_t kGetVcpReplyOpcode = 0x02;
inline constexpr std::uint8_t kSetVcpOpcode = 0x03;
inline constexpr std::uint8_t kVcpResultNoError = 0x00;
inline constexpr std::uint8_t kVcpResultUnsupported = 0x01;
// Replies are checksummed with this address in place of the host's source address 0x51.
inline constexpr std::uint8_t kDdcVirtualHostAddress = 0x50;
// The monitor's address as the first byte of its replies.
inline constexpr std::uint8_t kDdcReplySource = 0x6E;

// 6E 88 02 result code type max-hi max-lo cur-hi cur-lo checksum.
inline constexpr std::size_t kVcpReplySize = 11;
inline constexpr std::size_t kEdidBlockSize = 128;

// Exclusive-or of destination, source and every byte of the message.
std::uint8_t ddcChecksum(std::span<const std::uint8_t> message);

// 84 03 code value-hi value-lo checksum.
std::array<std::uint8_t, 6> setVcpPacket(std::uint8_t code, std::uint16_t value);
// 82 01 code checksum.
std::array<std::uint8_t, 4> getVcpRequest(std::uint8_t code);

// What a Get VCP Feature reply says. Only `ok` carries a value; `unsupported` is a valid
// answer (the monitor lacks the code); `invalid` is a failed attempt, never a value.
struct VcpReply {
    enum class Kind { ok, unsupported, invalid };
    Kind kind = Kind::invalid;
    std::uint16_t current = 0;
    std::uint16_t maximum = 0;
    // For `invalid`: why, in words for the log ("bad checksum", "null message", ...).
    const char* fault = "";
};

// Checks every byte of a reply to a request for `code`: 6E 88 02 result code type max-hi
// max-lo cur-hi cur-lo checksum, where the checksum is the XOR of the host's virtual address
// 0x50 and every byte before it. A bus that returns all 0xFF, a null message (6E 80 BE: the
// monitor has nothing to say yet), a wrong length, opcode, code or result, or a checksum that
// does not match are all invalid.
VcpReply checkVcpReply(std::span<const std::uint8_t> reply, std::uint8_t code);

// (current, maximum) of a valid reply that carries a value; nothing otherwise.
std::optional<std::pair<std::uint16_t, std::uint16_t>> parseVcpReply(
    std::span<const std::uint8_t> reply, std::uint8_t code);

// Capabilities Request: 83 F3 offset-hi offset-lo checksum. The reply is a fragment of the
// string at that offset: 6E 80|(3+n) E3 offset-hi offset-lo data[n] checksum, n at most 32;
// an empty fragment ends the string.
inline constexpr std::uint8_t kCapabilitiesRequestOpcode = 0xF3;
inline constexpr std::uint8_t kCapabilitiesReplyOpcode = 0xE3;
inline constexpr std::size_t kCapabilitiesFragmentMax = 32;
inline constexpr std::size_t kCapabilitiesReplyMaxSize = kCapabilitiesFragmentMax + 6;

std::array<std::uint8_t, 5> capabilitiesRequest(std::uint16_t offset);

// One fragment's bytes, or nothing with the reason (the same checks as a VCP reply, and the
// offset must be the one asked for).
struct CapabilitiesFragment {
    std::optional<std::vector<std::uint8_t>> data;
    const char* fault = "";
};
CapabilitiesFragment checkCapabilitiesFragment(std::span<const std::uint8_t> reply,
                                               std::uint16_t offset);

// The three EDID numbers the display server reports for the same monitor.
struct EdidIds {
    std::uint32_t vendor = 0;   // bytes 8-9, big-endian
    std::uint32_t product = 0;  // bytes 10-11, little-endian
    std::uint32_t serial = 0;   // bytes 12-15, little-endian
    friend bool operator==(const EdidIds&, const EdidIds&) = default;
};

// Nothing unless the bytes begin like an EDID header (00 FF) and reach the serial.
std::optional<EdidIds> parseEdidIds(std::span<const std::uint8_t> edid);

}  // namespace lumora
