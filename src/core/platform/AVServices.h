#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace lumora {

// One AV service entry of the platform's device registry (on macOS a DCPAVServiceProxy;
// on Linux an I2C bus that carries a display's DDC lines).
struct AVServiceEntry {
    std::string location;  // "External" for a monitor's link; anything else is skipped
    std::uint64_t handle = 0;  // backend-private identity of the entry
};

// An opened I2C channel to one display. Status 0 means the transfer went through.
class AVChannel {
public:
    virtual ~AVChannel() = default;
    virtual std::int32_t readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                                 std::span<std::uint8_t> buffer) = 0;
    virtual std::int32_t writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                                  std::span<const std::uint8_t> bytes) = 0;
};

// The platform's AV services. Each entry point may be missing; a channel opened without
// the read or write entry point answers every such call with a failure status.
class AVServices {
public:
    virtual ~AVServices() = default;
    [[nodiscard]] virtual bool canCreate() const = 0;
    [[nodiscard]] virtual bool canRead() const = 0;
    [[nodiscard]] virtual bool canWrite() const = 0;
    // Every AV service entry of the registry, in registry order.
    [[nodiscard]] virtual std::vector<AVServiceEntry> entries() const = 0;
    // Nothing when the service cannot be created for the entry.
    virtual std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) = 0;
};

}  // namespace lumora
