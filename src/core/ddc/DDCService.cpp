#include "ddc/DDCService.h"

#include <array>

namespace lumora {

namespace {

// Monitors' control processors drop a packet that follows the previous transfer too closely.
constexpr double kSendPause = 0.010;
// A monitor may take up to 40 ms to prepare a reply; asking earlier gets a NAK or garbage.
constexpr double kReplyWait = 0.050;
constexpr double kEdidRetryPause = 0.010;
constexpr int kEdidAttempts = 3;
constexpr int kReadAttempts = 3;
// Some monitors miss the first packet after an idle spell, so every write goes out twice.
constexpr int kWriteTransmissions = 2;

constexpr std::int32_t kStatusOK = 0;

}  // namespace

std::shared_ptr<DDCService> DDCService::open(AVServices& services, const AVServiceEntry& entry,
                                             Sleeper& sleeper) {
    if (!services.canCreate()) return nullptr;
    auto channel = services.create(entry);
    if (!channel) return nullptr;
    std::shared_ptr<DDCService> service(
        new DDCService(std::move(channel), services.canRead(), services.canWrite(), sleeper));
    service->readEdid();
    return service;
}

DDCService::DDCService(std::shared_ptr<AVChannel> channel, bool canRead, bool canWrite,
                       Sleeper& sleeper)
    : channel_(std::move(channel)), canRead_(canRead), canWrite_(canWrite), sleeper_(sleeper) {}

void DDCService::readEdid() {
    if (!canRead_) return;
    // One buffer for every attempt: a failed read may leave bytes behind, as on the real bus.
    std::array<std::uint8_t, kEdidBlockSize> buffer{};
    for (int attempt = 0; attempt < kEdidAttempts; ++attempt) {
        const auto status = channel_->readI2C(kEdidChip, kEdidDataAddress, buffer);
        if (status == kStatusOK) {
            if (auto ids = parseEdidIds(buffer)) {
                edid_ = *ids;
                return;
            }
        }
        sleeper_.sleep(kEdidRetryPause);
    }
}

bool DDCService::write(std::uint8_t code, std::uint16_t value) {
    if (!canWrite_) return false;
    const auto packet = setVcpPacket(code, value);
    std::lock_guard guard(lock_);
    bool accepted = false;
    for (int i = 0; i < kWriteTransmissions; ++i) {
        sleeper_.sleep(kSendPause);
        if (channel_->writeI2C(kDdcChip, kDdcDataAddress, packet) == kStatusOK) accepted = true;
    }
    return accepted;
}

std::optional<std::pair<std::uint16_t, std::uint16_t>> DDCService::read(std::uint8_t code) {
    if (!canRead_ || !canWrite_) return std::nullopt;
    const auto request = getVcpRequest(code);
    std::lock_guard guard(lock_);
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
        if (auto reading = attemptRead(code, request)) return reading;
    }
    return std::nullopt;
}

std::optional<std::pair<std::uint16_t, std::uint16_t>> DDCService::attemptRead(
    std::uint8_t code, std::span<const std::uint8_t> request) {
    std::array<std::uint8_t, kVcpReplySize> reply{};
    sleeper_.sleep(kSendPause);
    if (channel_->writeI2C(kDdcChip, kDdcDataAddress, request) != kStatusOK) return std::nullopt;
    sleeper_.sleep(kReplyWait);
    if (channel_->readI2C(kDdcChip, kDdcDataAddress, reply) != kStatusOK) return std::nullopt;
    return parseVcpReply(reply, code);
}

}  // namespace lumora
