#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "hw/I2cDevice.h"
#include "platform/AVServices.h"

namespace lumora::lx {

// One display's DDC lines over an open /dev/i2c-N, with the meaning the core gives to a
// transfer: a write sends [dataAddress, bytes...] to the chip; a read from the DDC/CI chip
// (0x37) is a plain read of its reply; a read from any other chip (the EDID memory at 0x50)
// sets the offset dataAddress and reads from there in one transaction.
//
// The DDC/CI messages use I2C_SLAVE with plain write()/read(): each is a single message with
// a pause between, which is the simplest path every adapter driver supports, and I2C_SLAVE
// refuses an address a kernel driver has claimed instead of talking over it. The EDID read
// uses I2C_RDWR so the offset write and the read share one transaction (repeated start) and
// nobody else can move the memory's pointer between them.
//
// Each exchange holds the adapter file's advisory lock (flock), as other programs using the
// bus do, so their transactions and Lumora's never interleave on the wire.
//
// Statuses are 0 or the errno of the failed call.
class I2cChannel final : public AVChannel {
  public:
    // Another program may hold the bus this long before an exchange is given up.
    static constexpr double kBusHoldLimit = 2.0;

    // `onBusy` hears once (again only after the bus was free) that the bus stayed held.
    explicit I2cChannel(std::unique_ptr<I2cDevice> device, std::function<void()> onBusy = {});

    I2CStatus readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                      std::span<std::uint8_t> buffer) override;
    I2CStatus writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                       std::span<const std::uint8_t> bytes) override;
    bool beginExchange() override;
    void endExchange() override;

  private:
    SysError select(std::uint8_t chip);

    std::unique_ptr<I2cDevice> device_;
    // The chip I2C_SLAVE last selected, so an exchange does not repeat the ioctl.
    std::optional<std::uint8_t> slave_;
    std::function<void()> onBusy_;
    bool reportedBusy_ = false;
};

}  // namespace lumora::lx
