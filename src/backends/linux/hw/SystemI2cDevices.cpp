#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

#include "hw/I2cDevice.h"

namespace lumora::lx {

namespace {

// i2c-dev refuses longer messages (and shortens longer plain reads and writes).
constexpr std::size_t kMaxMessageBytes = 8192;
constexpr std::size_t kMaxMessages = I2C_RDWR_IOCTL_MAX_MSGS;
// How often a held bus lock is tried again: short against an exchange of tens of ms.
constexpr std::chrono::milliseconds kLockRetry{5};
// A call that moved fewer bytes (or messages) than asked: the chip stopped acknowledging.
constexpr SysError kShortTransfer = EIO;

// A signal arriving during a transfer is no reason to give it up.
template <class Call>
auto retryInterrupted(Call call) {
    for (;;) {
        auto result = call();
        if (result >= 0 || errno != EINTR) return result;
    }
}

SysError lastError() {
    return errno != 0 ? errno : EIO;
}

class SystemI2cDevice final : public I2cDevice {
  public:
    explicit SystemI2cDevice(int fd) : fd_(fd) {}
    // Not retried on EINTR: Linux releases the descriptor whatever close() returns.
    ~SystemI2cDevice() override { ::close(fd_); }
    SystemI2cDevice(const SystemI2cDevice&) = delete;
    SystemI2cDevice& operator=(const SystemI2cDevice&) = delete;

    SysError setSlave(std::uint8_t address) override {
        const unsigned long slave = address;
        if (retryInterrupted([&] { return ::ioctl(fd_, I2C_SLAVE, slave); }) < 0)
            return lastError();
        return kSysOK;
    }

    SysError read(std::span<std::uint8_t> buffer) override {
        if (buffer.size() > kMaxMessageBytes) return EINVAL;
        const auto got =
            retryInterrupted([&] { return ::read(fd_, buffer.data(), buffer.size()); });
        if (got < 0) return lastError();
        return static_cast<std::size_t>(got) == buffer.size() ? kSysOK : kShortTransfer;
    }

    SysError write(std::span<const std::uint8_t> bytes) override {
        if (bytes.size() > kMaxMessageBytes) return EINVAL;
        const auto sent =
            retryInterrupted([&] { return ::write(fd_, bytes.data(), bytes.size()); });
        if (sent < 0) return lastError();
        return static_cast<std::size_t>(sent) == bytes.size() ? kSysOK : kShortTransfer;
    }

    SysError transfer(std::span<const I2cMessage> messages) override {
        if (messages.empty() || messages.size() > kMaxMessages) return EINVAL;
        std::vector<i2c_msg> raw;
        raw.reserve(messages.size());
        for (const auto& m : messages) {
            if (m.bytes.size() > kMaxMessageBytes) return EINVAL;
            raw.push_back(i2c_msg{m.address, static_cast<__u16>(m.read ? I2C_M_RD : 0),
                                  static_cast<__u16>(m.bytes.size()), m.bytes.data()});
        }
        i2c_rdwr_ioctl_data data{raw.data(), static_cast<__u32>(raw.size())};
        const int done = retryInterrupted([&] { return ::ioctl(fd_, I2C_RDWR, &data); });
        if (done < 0) return lastError();
        return static_cast<std::size_t>(done) == raw.size() ? kSysOK : kShortTransfer;
    }

    SysError lock(double seconds) override {
        const auto deadline = std::chrono::steady_clock::now() +
                              std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                  std::chrono::duration<double>(seconds));
        for (;;) {
            if (::flock(fd_, LOCK_EX | LOCK_NB) == 0) return kSysOK;
            if (errno != EWOULDBLOCK && errno != EINTR) return lastError();
            if (std::chrono::steady_clock::now() >= deadline) return EWOULDBLOCK;
            std::this_thread::sleep_for(kLockRetry);
        }
    }

    void unlock() override { ::flock(fd_, LOCK_UN); }

  private:
    int fd_;
};

class SystemI2cDevices final : public I2cDevices {
  public:
    Opened open(const std::string& path) override {
        const int fd = retryInterrupted([&] { return ::open(path.c_str(), O_RDWR | O_CLOEXEC); });
        if (fd < 0) return {nullptr, lastError()};
        return {std::make_unique<SystemI2cDevice>(fd), kSysOK};
    }
};

}  // namespace

std::shared_ptr<I2cDevices> systemI2cDevices() {
    return std::make_shared<SystemI2cDevices>();
}

}  // namespace lumora::lx
