#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <utility>

#include "sim/World.h"

namespace lumora::sim {

// 128 bytes of EDID for a monitor: a valid header and checksum, the manufacturer id at bytes
// 8-9 big-endian, the product code at 10-11 and the serial at 12-15 little-endian.
std::array<std::uint8_t, 128> makeEdid(std::uint32_t vendor, std::uint32_t product,
                                       std::uint32_t serial);

// The control processor of a simulated DDC/CI monitor, faithful at the byte level. It sees
// the I2C transfers of its channel with the time they happen (scheduler uptime, seconds).
// Not locked: its owner serialises access.
class SimDdcMonitor {
  public:
    SimDdcMonitor(const WorldDdc& config, std::uint32_t vendor, std::uint32_t product,
                  std::uint32_t serial);

    // Status 0 when the transfer went through the bus (a monitor that ignores a malformed
    // packet still acknowledges its bytes).
    std::int32_t write(std::uint8_t chip, std::uint8_t dataAddress,
                       std::span<const std::uint8_t> bytes, double now);
    std::int32_t read(std::uint8_t chip, std::uint8_t dataAddress, std::span<std::uint8_t> buffer,
                      double now);

    // Whether an exchange may start: false while another program holds the bus.
    bool takeBus();
    // Another program takes the bus for the next `exchanges` exchanges.
    void holdBus(int exchanges) { busyLeft_ = exchanges; }

    // The monitor wakes from sleep: one that forgets goes back to the values it was made with,
    // and it ignores DDC/CI for the configured while.
    void wake(double now);

    // What the monitor holds now: code -> (current, maximum).
    [[nodiscard]] const std::map<std::uint8_t, std::pair<std::uint16_t, std::uint16_t>>& vcp()
        const {
        return vcp_;
    }

  private:
    // DDC/CI is on in the monitor's menu and the monitor is not just waking.
    [[nodiscard]] bool listens(double now) const;
    // 6E 80|(3+n) E3 offset data checksum into `buffer`.
    void fragmentReply(std::uint16_t offset, std::span<std::uint8_t> buffer);

    WorldDdc config_;
    std::array<std::uint8_t, 128> edid_;
    std::map<std::uint8_t, std::pair<std::uint16_t, std::uint16_t>> vcp_;
    // The Get VCP Feature request waiting for its reply, and when it arrived.
    std::optional<std::uint8_t> pendingCode_;
    double requestedAt_ = 0;
    // Read attempts that failed so far for the current request (see WorldDdc::failFirst).
    int failedAttempts_ = 0;
    std::optional<std::uint8_t> lastRequestedCode_;
    int edidFailures_ = 0;
    double deafUntil_ = 0;
    // When its last reply went out (quietTime counts from there), and corruptions left to make.
    double lastReplyAt_ = -1e9;
    // The capabilities fragment asked for, by offset.
    std::optional<std::uint16_t> pendingFragment_;
    int corruptLeft_ = 0;
    int busyLeft_ = 0;
};

}  // namespace lumora::sim
