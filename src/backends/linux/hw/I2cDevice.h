#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace lumora::lx {

// Outcome of a device call: 0, or the errno that explains the failure.
using SysError = int;
inline constexpr SysError kSysOK = 0;

// One message of a combined transfer: the bus keeps hold between messages (repeated start),
// so no other master can slip in between.
struct I2cMessage {
    std::uint8_t address = 0;  // 7-bit chip address
    bool read = false;
    std::span<std::uint8_t> bytes;  // sent from, or received into
};

// An open I2C adapter (/dev/i2c-N). Closing is the destructor's job.
class I2cDevice {
  public:
    virtual ~I2cDevice() = default;
    // The chip that the following read() and write() calls address.
    virtual SysError setSlave(std::uint8_t address) = 0;
    // Fails unless every byte arrived.
    virtual SysError read(std::span<std::uint8_t> buffer) = 0;
    // Fails unless every byte went out.
    virtual SysError write(std::span<const std::uint8_t> bytes) = 0;
    // All messages as one transaction; fails unless every message went through.
    virtual SysError transfer(std::span<const I2cMessage> messages) = 0;
    // The advisory lock other programs take on the same adapter file, waited for at most
    // `seconds`; EWOULDBLOCK when it stays taken.
    virtual SysError lock(double /*seconds*/) { return kSysOK; }
    virtual void unlock() {}
};

// Opens adapters by path. Injectable so that a test can put a monitor behind the bus.
class I2cDevices {
  public:
    struct Opened {
        std::unique_ptr<I2cDevice> device;  // absent when the open failed
        SysError error = kSysOK;
    };
    virtual ~I2cDevices() = default;
    virtual Opened open(const std::string& path) = 0;
};

// The kernel's i2c-dev interface: open/ioctl/read/write on the character device.
std::shared_ptr<I2cDevices> systemI2cDevices();

}  // namespace lumora::lx
