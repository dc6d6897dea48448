#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

#include "ddc/DdcPacket.h"
#include "platform/AVServices.h"
#include "platform/Scheduler.h"

namespace lumora {

// One open DDC/CI channel to one external monitor, shared by everyone who talks to it.
// Every exchange holds the channel's lock from its first wait to its last transfer, so two
// operations on one monitor never interleave their packets; different monitors run in
// parallel. Calls block for tens of milliseconds: keep them off the main thread.
class DDCService {
  public:
    // Nothing when the platform cannot create the channel. Reads the monitor's EDID numbers;
    // a monitor whose EDID cannot be read keeps a usable channel with zero numbers.
    static std::shared_ptr<DDCService> open(AVServices& services, const AVServiceEntry& entry,
                                            Sleeper& sleeper);

    DDCService(const DDCService&) = delete;
    DDCService& operator=(const DDCService&) = delete;

    // Sets a feature; true when the monitor took at least one of the two transmissions.
    bool write(std::uint8_t code, std::uint16_t value);
    // (current, maximum) of a feature; nothing after three failed attempts.
    std::optional<std::pair<std::uint16_t, std::uint16_t>> read(std::uint8_t code);

    // As the display server reports them for the same monitor; 0 when the EDID was unread.
    [[nodiscard]] std::uint32_t edidVendor() const { return edid_.vendor; }
    [[nodiscard]] std::uint32_t edidProduct() const { return edid_.product; }
    [[nodiscard]] std::uint32_t edidSerial() const { return edid_.serial; }

  private:
    DDCService(std::shared_ptr<AVChannel> channel, bool canRead, bool canWrite, Sleeper& sleeper);
    void readEdid();
    std::optional<std::pair<std::uint16_t, std::uint16_t>> attemptRead(
        std::uint8_t code, std::span<const std::uint8_t> request);

    std::shared_ptr<AVChannel> channel_;
    // The platform's read and write entry points are bound once; a missing one stays missing.
    bool canRead_;
    bool canWrite_;
    Sleeper& sleeper_;
    EdidIds edid_;
    std::mutex lock_;
};

}  // namespace lumora
