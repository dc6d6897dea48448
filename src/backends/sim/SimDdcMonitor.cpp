#include "sim/SimDdcMonitor.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace lumora::sim {

namespace {

// The bus as the monitor sees it. Deliberately written apart from the core's packet code,
// so that a mistake there shows up as a monitor that does not understand it.
constexpr std::uint8_t kControlChip = 0x37;
constexpr std::uint8_t kHostAddress = 0x51;  // first byte of every host message
constexpr std::uint8_t kEdidChip = 0x50;
constexpr std::uint8_t kMonitorWriteAddress = 0x6E;
// Replies are checksummed against the host's "virtual" address 0x50 instead of 0x51.
constexpr std::uint8_t kReplyChecksumSeed = 0x50;
constexpr std::uint8_t kLengthFlag = 0x80;
constexpr std::uint8_t kLengthMask = 0x7F;

constexpr std::uint8_t kGetVcp = 0x01;
constexpr std::uint8_t kGetVcpReply = 0x02;
constexpr std::uint8_t kSetVcp = 0x03;
constexpr std::uint8_t kCapabilities = 0xF3;
constexpr std::uint8_t kCapabilitiesReply = 0xE3;
constexpr std::size_t kCapabilitiesBody = 3;  // opcode, offset (2)
constexpr std::size_t kFragmentBytes = 32;
constexpr std::size_t kGetVcpBody = 2;  // opcode, code
constexpr std::size_t kSetVcpBody = 4;  // opcode, code, value high, value low
constexpr std::uint8_t kResultNoError = 0x00;
constexpr std::uint8_t kResultUnsupported = 0x01;
constexpr std::uint8_t kTypeSetParameter = 0x00;
constexpr std::uint8_t kReplyLengthByte = kLengthFlag | 8;
constexpr std::size_t kReplySize = 11;

// What IOKit answers when nobody acknowledges on the bus (kIOReturnNotResponding).
constexpr std::int32_t kNotResponding = static_cast<std::int32_t>(0xE00002EDu);
constexpr std::int32_t kAcknowledged = 0;

// The bit a noisy cable flips: the low byte of the current value.
constexpr std::size_t kCorruptedByte = 9;
constexpr std::uint8_t kCorruptedBit = 0x04;

// Virtual times are sums of doubles; a host that waited exactly the reply delay must not
// be refused because of rounding.
constexpr double kTimeTolerance = 1e-9;

std::uint8_t hi(std::uint32_t v) {
    return static_cast<std::uint8_t>((v >> 8) & 0xFF);
}
std::uint8_t lo(std::uint32_t v) {
    return static_cast<std::uint8_t>(v & 0xFF);
}

}  // namespace

std::array<std::uint8_t, 128> makeEdid(std::uint32_t vendor, std::uint32_t product,
                                       std::uint32_t serial) {
    std::array<std::uint8_t, 128> e{};
    const std::array<std::uint8_t, 8> header = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    std::copy(header.begin(), header.end(), e.begin());
    e[8] = hi(vendor);
    e[9] = lo(vendor);
    e[10] = lo(product);
    e[11] = hi(product);
    e[12] = lo(serial);
    e[13] = hi(serial);
    e[14] = lo(serial >> 16);
    e[15] = hi(serial >> 16);
    e[16] = 1;   // week of manufacture
    e[17] = 34;  // year - 1990: 2024
    e[18] = 1;   // EDID 1.4
    e[19] = 4;
    e[20] = 0xA5;  // digital input, 8 bits per colour, DisplayPort
    e[21] = 60;    // screen size, cm
    e[22] = 34;
    e[23] = 120;   // gamma 2.2
    e[24] = 0x2A;  // DPMS active-off, RGB 4:4:4 + YCrCb 4:4:4, preferred timing is native
    // sRGB chromaticity.
    const std::array<std::uint8_t, 10> chroma = {0xEE, 0x91, 0xA3, 0x54, 0x4C,
                                                 0x99, 0x26, 0x0F, 0x50, 0x54};
    std::copy(chroma.begin(), chroma.end(), e.begin() + 25);
    // 35-37: no established timings. 38-53: standard timings unused.
    std::fill(e.begin() + 38, e.begin() + 54, 0x01);
    // 54-71: preferred timing 2560x1440 at 60 Hz (reduced blanking), 597 x 336 mm.
    const std::array<std::uint8_t, 18> preferred = {0x56, 0x5E, 0x00, 0xA0, 0xA0, 0xA0,
                                                    0x29, 0x50, 0x30, 0x20, 0x35, 0x00,
                                                    0x55, 0x50, 0x21, 0x00, 0x00, 0x1A};
    std::copy(preferred.begin(), preferred.end(), e.begin() + 54);
    // 72-89: range limits 50-75 Hz, 30-90 kHz, 250 MHz.
    const std::array<std::uint8_t, 18> range = {0x00, 0x00, 0x00, 0xFD, 0x00, 0x32,
                                                0x4B, 0x1E, 0x5A, 0x19, 0x00, 0x0A,
                                                0x20, 0x20, 0x20, 0x20, 0x20, 0x20};
    std::copy(range.begin(), range.end(), e.begin() + 72);
    // 90-107: monitor name.
    const std::array<std::uint8_t, 18> name = {0x00, 0x00, 0x00, 0xFC, 0x00, 'L', 'u',  'm',  'o',
                                               'r',  'a',  ' ',  'S',  'i',  'm', 0x0A, 0x20, 0x20};
    std::copy(name.begin(), name.end(), e.begin() + 90);
    // 108-125: dummy descriptor.
    e[111] = 0x10;
    // 126: no extension blocks. 127: all 128 bytes sum to 0 modulo 256.
    unsigned sum = 0;
    for (std::size_t i = 0; i + 1 < e.size(); ++i)
        sum += e[i];
    e[127] = static_cast<std::uint8_t>((256 - sum % 256) % 256);
    return e;
}

SimDdcMonitor::SimDdcMonitor(const WorldDdc& config, std::uint32_t vendor, std::uint32_t product,
                             std::uint32_t serial)
    : config_(config),
      edid_(makeEdid(vendor, product, serial)),
      vcp_(config.vcp),
      corruptLeft_(config.corruptReplies) {}

bool SimDdcMonitor::takeBus() {
    if (busyLeft_ == 0) return true;
    --busyLeft_;
    return false;
}

void SimDdcMonitor::wake(double now) {
    if (config_.forgetsOnWake) vcp_ = config_.vcp;
    pendingCode_.reset();
    deafUntil_ = now + config_.wakeDeafSeconds;
}

bool SimDdcMonitor::listens(double now) const {
    return config_.answers && now >= deafUntil_;
}

std::int32_t SimDdcMonitor::write(std::uint8_t chip, std::uint8_t dataAddress,
                                  std::span<const std::uint8_t> bytes, double now) {
    if (chip == kEdidChip) return kAcknowledged;  // read-only memory: the bytes go nowhere
    if (chip != kControlChip || !listens(now)) return kNotResponding;
    if (dataAddress != kHostAddress || bytes.size() < 2) return kAcknowledged;
    // Still busy after its last reply: the bytes are acknowledged and go nowhere.
    if (now - lastReplyAt_ < config_.quietTime - kTimeTolerance) return kAcknowledged;

    const std::size_t body = bytes[0] & kLengthMask;
    if ((bytes[0] & kLengthFlag) == 0 || bytes.size() != body + 2) return kAcknowledged;
    std::uint8_t checksum = kMonitorWriteAddress ^ kHostAddress;
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i)
        checksum ^= bytes[i];
    if (checksum != bytes.back() || body == 0) return kAcknowledged;

    const std::uint8_t opcode = bytes[1];
    if (opcode == kSetVcp && body == kSetVcpBody) {
        // A new message replaces any reply the monitor had ready.
        pendingCode_.reset();
        auto found = vcp_.find(bytes[2]);
        if (found != vcp_.end()) {
            const auto value = static_cast<std::uint16_t>((bytes[3] << 8) | bytes[4]);
            found->second.first = std::min(value, found->second.second);
        }
    } else if (opcode == kCapabilities && body == kCapabilitiesBody) {
        pendingCode_.reset();
        pendingFragment_ = static_cast<std::uint16_t>((bytes[2] << 8) | bytes[3]);
        requestedAt_ = now;
    } else if (opcode == kGetVcp && body == kGetVcpBody) {
        pendingFragment_.reset();
        const std::uint8_t code = bytes[2];
        // The host retries by asking again; a different code starts a new request.
        if (lastRequestedCode_ != code) failedAttempts_ = 0;
        lastRequestedCode_ = code;
        pendingCode_ = code;
        requestedAt_ = now;
    }
    return kAcknowledged;
}

std::int32_t SimDdcMonitor::read(std::uint8_t chip, std::uint8_t dataAddress,
                                 std::span<std::uint8_t> buffer, double now) {
    if (chip == kEdidChip) {
        if (!config_.edid || dataAddress >= edid_.size()) return kNotResponding;
        if (edidFailures_ < config_.failFirst) {
            ++edidFailures_;
            return kNotResponding;
        }
        edidFailures_ = 0;
        const std::size_t count = std::min(buffer.size(), edid_.size() - dataAddress);
        std::copy_n(edid_.begin() + dataAddress, count, buffer.begin());
        return kAcknowledged;
    }
    if (chip != kControlChip || dataAddress != kHostAddress || !listens(now)) {
        return kNotResponding;
    }

    if (const auto fragment = pendingFragment_) {
        pendingFragment_.reset();
        if (!config_.capabilities || now - requestedAt_ < config_.replyDelay - kTimeTolerance)
            return kNotResponding;
        fragmentReply(*fragment, buffer);
        if (corruptLeft_ > 0) {
            --corruptLeft_;
            buffer[std::min<std::size_t>(kCorruptedByte, buffer.size() - 1)] ^= kCorruptedBit;
        }
        lastReplyAt_ = now;
        return kAcknowledged;
    }
    const auto pending = pendingCode_;
    pendingCode_.reset();  // every read ends the exchange, answered or not
    if (!pending) return kNotResponding;
    if (failedAttempts_ < config_.failFirst) {
        ++failedAttempts_;
        return kNotResponding;
    }
    if (now - requestedAt_ < config_.replyDelay - kTimeTolerance) return kNotResponding;

    failedAttempts_ = 0;
    lastRequestedCode_.reset();
    // 6E 88 02 result code type max-hi max-lo cur-hi cur-lo checksum; zeros for a code the
    // monitor lacks.
    std::array<std::uint8_t, kReplySize> reply = {
        kMonitorWriteAddress, kReplyLengthByte, kGetVcpReply,
        kResultUnsupported,   *pending,         kTypeSetParameter};
    if (auto found = vcp_.find(*pending); found != vcp_.end()) {
        const auto [current, maximum] = found->second;
        reply[3] = kResultNoError;
        reply[6] = hi(maximum);
        reply[7] = lo(maximum);
        reply[8] = hi(current);
        reply[9] = lo(current);
    }
    std::uint8_t checksum = kReplyChecksumSeed;
    for (std::size_t i = 0; i + 1 < reply.size(); ++i)
        checksum ^= reply[i];
    reply.back() = checksum;
    // A noisy cable: one bit of the value flips after the checksum was made.
    if (corruptLeft_ > 0) {
        --corruptLeft_;
        reply[kCorruptedByte] ^= kCorruptedBit;
    }
    lastReplyAt_ = now;
    std::copy_n(reply.begin(), std::min(buffer.size(), reply.size()), buffer.begin());
    return kAcknowledged;
}

void SimDdcMonitor::fragmentReply(std::uint16_t offset, std::span<std::uint8_t> buffer) {
    const std::string& text = *config_.capabilities;
    const std::size_t start = std::min<std::size_t>(offset, text.size());
    const std::size_t count = std::min(kFragmentBytes, text.size() - start);
    std::vector<std::uint8_t> reply = {kMonitorWriteAddress,
                                       static_cast<std::uint8_t>(kLengthFlag | (3 + count)),
                                       kCapabilitiesReply, hi(offset), lo(offset)};
    reply.insert(reply.end(), text.begin() + static_cast<std::ptrdiff_t>(start),
                 text.begin() + static_cast<std::ptrdiff_t>(start + count));
    std::uint8_t checksum = kReplyChecksumSeed;
    for (std::uint8_t byte : reply)
        checksum ^= byte;
    reply.push_back(checksum);
    std::fill(buffer.begin(), buffer.end(), 0);
    std::copy_n(reply.begin(), std::min(buffer.size(), reply.size()), buffer.begin());
}

}  // namespace lumora::sim
