#include "ddc/DdcPacket.h"

#include <algorithm>

namespace lumora {

namespace {

// Message bodies after the length byte, checksum excluded.
constexpr std::uint8_t kSetVcpBodySize = 4;  // opcode, code, value high, value low
constexpr std::uint8_t kGetVcpBodySize = 2;  // opcode, code

// A Get VCP Feature reply's body: opcode, result, code, type, maximum (2), current (2).
constexpr std::uint8_t kVcpReplyBodySize = 8;
// What an idle bus reads as.
constexpr std::uint8_t kIdleBus = 0xFF;
constexpr std::size_t kReplySourceAt = 0;
constexpr std::size_t kReplyLengthAt = 1;
constexpr std::size_t kReplyOpcodeAt = 2;
constexpr std::uint8_t kCapabilitiesRequestBodySize = 3;  // opcode, offset (2)
constexpr std::size_t kFragmentHeaderSize = 3;            // opcode, offset (2)
constexpr std::size_t kFragmentOffsetAt = 3;
constexpr std::size_t kFragmentDataAt = 5;
constexpr std::size_t kReplyResultAt = 3;
constexpr std::size_t kReplyCodeAt = 4;
constexpr std::size_t kReplyMaximumAt = 6;
constexpr std::size_t kReplyCurrentAt = 8;

// Every EDID begins 00 FF FF FF FF FF FF 00; the first two bytes tell it from an empty bus.
constexpr std::uint8_t kEdidHeader0 = 0x00;
constexpr std::uint8_t kEdidHeader1 = 0xFF;
constexpr std::size_t kEdidVendorAt = 8;
constexpr std::size_t kEdidProductAt = 10;
constexpr std::size_t kEdidSerialAt = 12;
// Enough bytes to hold the serial, the last number taken.
constexpr std::size_t kEdidIdsSize = 16;

std::uint8_t highByte(std::uint16_t value) {
    return static_cast<std::uint8_t>(value >> 8);
}
std::uint8_t lowByte(std::uint16_t value) {
    return static_cast<std::uint8_t>(value & 0xFF);
}

std::uint16_t bigEndian16(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
}

std::uint32_t littleEndian(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;)
        value = (value << 8) | bytes[at + i];
    return value;
}

// What is wrong with the start of any reply, whatever was asked: nothing when it looks like
// a message from the monitor that has something to say.
const char* headerFault(std::span<const std::uint8_t> reply) {
    if (reply.size() < kReplyLengthAt + 1) return "short reply";
    if (std::all_of(reply.begin(), reply.end(), [](std::uint8_t b) { return b == kIdleBus; }))
        return "no data (all 0xFF)";
    if (reply[kReplySourceAt] != kDdcReplySource) return "wrong source address";
    if (reply[kReplyLengthAt] == kDdcLengthFlag) return "null message";
    return nullptr;
}

}  // namespace

std::uint8_t ddcChecksum(std::span<const std::uint8_t> message) {
    std::uint8_t sum = kDdcDestination ^ kDdcDataAddress;
    for (std::uint8_t byte : message)
        sum ^= byte;
    return sum;
}

std::array<std::uint8_t, 6> setVcpPacket(std::uint8_t code, std::uint16_t value) {
    std::array<std::uint8_t, 6> packet = {
        kDdcLengthFlag | kSetVcpBodySize, kSetVcpOpcode, code, highByte(value), lowByte(value), 0};
    packet.back() = ddcChecksum(std::span(packet).first(packet.size() - 1));
    return packet;
}

std::array<std::uint8_t, 4> getVcpRequest(std::uint8_t code) {
    std::array<std::uint8_t, 4> packet = {kDdcLengthFlag | kGetVcpBodySize, kGetVcpOpcode, code, 0};
    packet.back() = ddcChecksum(std::span(packet).first(packet.size() - 1));
    return packet;
}

VcpReply checkVcpReply(std::span<const std::uint8_t> reply, std::uint8_t code) {
    VcpReply out;
    const auto invalid = [&out](const char* fault) {
        out.fault = fault;
        return out;
    };
    if (const char* fault = headerFault(reply)) return invalid(fault);
    if (reply[kReplyLengthAt] != (kDdcLengthFlag | kVcpReplyBodySize) ||
        reply.size() < kVcpReplySize)
        return invalid("wrong length");
    std::uint8_t sum = kDdcVirtualHostAddress;
    for (std::size_t i = 0; i + 1 < kVcpReplySize; ++i)
        sum ^= reply[i];
    if (sum != reply[kVcpReplySize - 1]) return invalid("bad checksum");
    if (reply[kReplyOpcodeAt] != kGetVcpReplyOpcode) return invalid("wrong opcode");
    if (reply[kReplyCodeAt] != code) return invalid("another code");
    if (reply[kReplyResultAt] == kVcpResultUnsupported) {
        out.kind = VcpReply::Kind::unsupported;
        return out;
    }
    if (reply[kReplyResultAt] != kVcpResultNoError) return invalid("unknown result code");
    out.kind = VcpReply::Kind::ok;
    out.current = bigEndian16(reply, kReplyCurrentAt);
    out.maximum = bigEndian16(reply, kReplyMaximumAt);
    return out;
}

std::optional<std::pair<std::uint16_t, std::uint16_t>> parseVcpReply(
    std::span<const std::uint8_t> reply, std::uint8_t code) {
    const VcpReply checked = checkVcpReply(reply, code);
    if (checked.kind != VcpReply::Kind::ok) return std::nullopt;
    return std::pair{checked.current, checked.maximum};
}

std::array<std::uint8_t, 5> capabilitiesRequest(std::uint16_t offset) {
    std::array<std::uint8_t, 5> packet = {kDdcLengthFlag | kCapabilitiesRequestBodySize,
                                          kCapabilitiesRequestOpcode, highByte(offset),
                                          lowByte(offset), 0};
    packet.back() = ddcChecksum(std::span(packet).first(packet.size() - 1));
    return packet;
}

CapabilitiesFragment checkCapabilitiesFragment(std::span<const std::uint8_t> reply,
                                               std::uint16_t offset) {
    CapabilitiesFragment out;
    const auto invalid = [&out](const char* fault) {
        out.fault = fault;
        return out;
    };
    if (const char* fault = headerFault(reply)) return invalid(fault);
    const std::size_t body = reply[kReplyLengthAt] & ~kDdcLengthFlag;
    if ((reply[kReplyLengthAt] & kDdcLengthFlag) == 0 || body < kFragmentHeaderSize ||
        body > kFragmentHeaderSize + kCapabilitiesFragmentMax ||
        reply.size() < kReplyLengthAt + 1 + body + 1) {
        return invalid("wrong length");
    }
    const std::size_t checksumAt = kReplyLengthAt + 1 + body;
    std::uint8_t sum = kDdcVirtualHostAddress;
    for (std::size_t i = 0; i < checksumAt; ++i)
        sum ^= reply[i];
    if (sum != reply[checksumAt]) return invalid("bad checksum");
    if (reply[kReplyOpcodeAt] != kCapabilitiesReplyOpcode) return invalid("wrong opcode");
    if (bigEndian16(reply, kFragmentOffsetAt) != offset) return invalid("another offset");
    const auto data = reply.subspan(kFragmentDataAt, checksumAt - kFragmentDataAt);
    out.data.emplace(data.begin(), data.end());
    return out;
}

std::optional<EdidIds> parseEdidIds(std::span<const std::uint8_t> edid) {
    if (edid.size() < kEdidIdsSize || edid[0] != kEdidHeader0 || edid[1] != kEdidHeader1)
        return std::nullopt;
    return EdidIds{bigEndian16(edid, kEdidVendorAt), littleEndian(edid, kEdidProductAt, 2),
                   littleEndian(edid, kEdidSerialAt, 4)};
}

}  // namespace lumora
