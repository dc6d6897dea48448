#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/Types.h"

namespace lumora {

// One I2C channel that may lead to a display's DDC/CI (on macOS an AV service of the display
// pipe; on Linux an I2C bus of a display connector).
struct AVServiceEntry {
    // Whether it leads to an external monitor; the built-in panel's channel is skipped.
    bool external = false;
    // The display it belongs to, when the platform knows (Linux: the connector's output).
    std::optional<DisplayID> display;
    std::uint64_t handle = 0;  // backend-private identity of the entry
};

// Status of a transfer: 0 means it went through.
using I2CStatus = std::int32_t;
inline constexpr I2CStatus kI2COK = 0;

// An opened I2C channel to one display.
class AVChannel {
  public:
    virtual ~AVChannel() = default;
    virtual I2CStatus readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                              std::span<std::uint8_t> buffer) = 0;
    virtual I2CStatus writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                               std::span<const std::uint8_t> bytes) = 0;
    // Brackets one whole exchange (request, wait, reply), so that other programs using the same
    // bus never interleave with it. False when the bus stays held by someone else too long:
    // the exchange does not happen.
    virtual bool beginExchange() { return true; }
    virtual void endExchange() {}
};

// The platform's DDC/CI channels. Each entry point may be missing; a channel opened without
// the read or write entry point answers every such call with a failure status.
//
// Threading: entries() and create() on the DDC queue; a channel is used by one thread at a
// time (DDCService holds a lock for a whole exchange).
class AVServices {
  public:
    virtual ~AVServices() = default;
    [[nodiscard]] virtual bool canCreate() const = 0;
    [[nodiscard]] virtual bool canRead() const = 0;
    [[nodiscard]] virtual bool canWrite() const = 0;
    // Every channel entry, in registry order.
    [[nodiscard]] virtual std::vector<AVServiceEntry> entries() const = 0;
    // Nothing when the channel cannot be opened.
    virtual std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) = 0;
};

}  // namespace lumora
