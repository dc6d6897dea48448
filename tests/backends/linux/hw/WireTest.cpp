// The real device layer down to the system calls. The program is linked with
// --wrap=open,ioctl,read,write,close: calls on a path under the fake kernel's prefix, and on
// the descriptor it handed out, are recorded and answered here; all others reach the C library.
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <deque>
#include <mutex>

#include "SysfsTree.h"
#include "ddc/DDCService.h"
#include "ddc/DdcPacket.h"
#include "hw/LinuxAVServices.h"

namespace lumora::lx::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// "51 82 01 10 AC".
std::string hexBytes(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (auto b : bytes) {
        char two[4];
        std::snprintf(two, sizeof two, "%s%02X", text.empty() ? "" : " ", b);
        text += two;
    }
    return text;
}

// The kernel behind one /dev/i2c-N. Each call takes the next entry of `outcomes` (0, or the
// errno to fail with; none left means success); a successful read, or read message of
// I2C_RDWR, delivers the next entry of `reads`, which may be too short.
struct FakeKernel {
    std::string prefix = "/nonexistent-lumora-wire-" + std::to_string(::getpid());
    std::deque<int> outcomes;
    std::deque<Bytes> reads;
    std::vector<std::string> calls;
    int fd = -1;  // a real descriptor of /dev/null, so no other open() gets its number

    int call(std::string what) {
        calls.push_back(std::move(what));
        const int error = outcomes.empty() ? 0 : outcomes.front();
        if (!outcomes.empty()) outcomes.pop_front();
        errno = error;
        return error == 0 ? 0 : -1;
    }
    std::size_t deliver(std::span<std::uint8_t> buffer) {
        const Bytes bytes = reads.empty() ? Bytes{} : reads.front();
        if (!reads.empty()) reads.pop_front();
        const auto count = std::min(bytes.size(), buffer.size());
        std::copy_n(bytes.begin(), count, buffer.begin());
        return count;
    }
};

std::mutex gMutex;
FakeKernel* gKernel = nullptr;

FakeKernel* kernelFor(int fd) {
    return gKernel && gKernel->fd >= 0 && gKernel->fd == fd ? gKernel : nullptr;
}

std::string hexByte(unsigned long value) {
    const auto byte = static_cast<std::uint8_t>(value);
    return hexBytes(std::span(&byte, 1));
}

}  // namespace
}  // namespace lumora::lx::test

using namespace lumora::lx::test;

extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_ioctl(int fd, unsigned long request, ...);
ssize_t __real_read(int fd, void* buffer, size_t count);
ssize_t __real_write(int fd, const void* buffer, size_t count);
int __real_close(int fd);

int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) {
        va_list args;
        va_start(args, flags);
        mode = va_arg(args, mode_t);
        va_end(args);
    }
    std::lock_guard guard(gMutex);
    if (!gKernel || !std::string_view(path).starts_with(gKernel->prefix))
        return __real_open(path, flags, mode);
    const std::string name = std::filesystem::path(path).filename();
    const bool expected = flags == (O_RDWR | O_CLOEXEC);
    if (gKernel->call("open " + name + (expected ? " O_RDWR|O_CLOEXEC" : " other flags")) < 0)
        return -1;
    gKernel->fd = __real_open("/dev/null", O_RDWR | O_CLOEXEC);
    return gKernel->fd;
}

int __wrap_ioctl(int fd, unsigned long request, ...) {
    va_list args;
    va_start(args, request);
    const auto argument = va_arg(args, unsigned long);
    va_end(args);
    std::lock_guard guard(gMutex);
    auto* k = kernelFor(fd);
    if (!k) return __real_ioctl(fd, request, argument);
    if (request == I2C_SLAVE) return k->call("ioctl I2C_SLAVE " + hexByte(argument));
    if (request != I2C_RDWR) {
        k->call("ioctl other");
        errno = ENOTTY;
        return -1;
    }
    const auto& data = *reinterpret_cast<const i2c_rdwr_ioctl_data*>(argument);
    std::string what = "ioctl I2C_RDWR";
    for (__u32 i = 0; i < data.nmsgs; ++i) {
        const auto& m = data.msgs[i];
        const bool read = (m.flags & I2C_M_RD) != 0;
        what += (read ? " r" : " w") + hexByte(m.addr) + "[" +
                (read ? std::to_string(m.len) : hexBytes(std::span(m.buf, m.len))) + "]";
    }
    if (k->call(what) < 0) return -1;
    int done = 0;
    for (__u32 i = 0; i < data.nmsgs; ++i) {
        const auto& m = data.msgs[i];
        if ((m.flags & I2C_M_RD) != 0 && k->deliver(std::span(m.buf, m.len)) < m.len) break;
        ++done;
    }
    return done;
}

ssize_t __wrap_read(int fd, void* buffer, size_t count) {
    std::lock_guard guard(gMutex);
    auto* k = kernelFor(fd);
    if (!k) return __real_read(fd, buffer, count);
    if (k->call("read " + std::to_string(count)) < 0) return -1;
    return static_cast<ssize_t>(k->deliver(std::span(static_cast<std::uint8_t*>(buffer), count)));
}

ssize_t __wrap_write(int fd, const void* buffer, size_t count) {
    std::lock_guard guard(gMutex);
    auto* k = kernelFor(fd);
    if (!k) return __real_write(fd, buffer, count);
    const std::span bytes(static_cast<const std::uint8_t*>(buffer), count);
    return k->call("write " + hexBytes(bytes)) < 0 ? -1 : static_cast<ssize_t>(count);
}

int __wrap_close(int fd) {
    {
        std::lock_guard guard(gMutex);
        if (auto* k = kernelFor(fd)) {
            k->call("close");
            k->fd = -1;
        }
    }
    return __real_close(fd);
}
}

namespace lumora::lx::test {
namespace {

class NoSleep final : public Sleeper {
  public:
    void sleep(double /*seconds*/) override {}
};

class WireTest : public ::testing::Test {
  protected:
    void SetUp() override {
        tree.card("card0", "pci0000:00/0000:00:02.0");
        tree.connector("card0-DP-1", "connected", 4);
        std::lock_guard guard(gMutex);
        gKernel = &kernel;
    }
    void TearDown() override {
        std::lock_guard guard(gMutex);
        gKernel = nullptr;
    }
    AVServiceEntry onlyEntry() {
        const auto entries = services.entries();
        EXPECT_EQ(entries.size(), 1u);
        return entries.empty() ? AVServiceEntry{} : entries[0];
    }

    FakeKernel kernel;
    SysfsTree tree;
    std::vector<std::string> logged;
    LinuxAVServices services{{.sysfsRoot = tree.root(),
                              .devRoot = kernel.prefix,
                              .displayFor = nullptr,
                              .log = [this](const std::string& line) { logged.push_back(line); },
                              .devices = systemI2cDevices()}};
};

TEST_F(WireTest, GetVcpBrightnessIsOpenIoctlWriteReadClose) {
    Bytes edid = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x10, 0xAC};
    edid.resize(kEdidBlockSize);
    kernel.reads = {edid, {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0xF2}};
    NoSleep sleeper;
    auto service = DDCService::open(services, onlyEntry(), sleeper);
    ASSERT_TRUE(service);
    EXPECT_EQ(service->edidVendor(), 0x10ACu);
    EXPECT_EQ(service->read(0x10), (std::pair<std::uint16_t, std::uint16_t>{50, 100}));
    service.reset();

    // The host's source address 0x51 leads the message; the monitor's write address 0x6E is
    // the address byte that the adapter sends itself for slave 0x37.
    Bytes request = {kDdcDataAddress};
    for (auto b : getVcpRequest(0x10))
        request.push_back(b);
    EXPECT_EQ(kernel.calls,
              (std::vector<std::string>{"open i2c-4 O_RDWR|O_CLOEXEC",
                                        "ioctl I2C_RDWR w50[00] r50[128]", "ioctl I2C_SLAVE 37",
                                        "write " + hexBytes(request), "read 11", "close"}));
    EXPECT_TRUE(logged.empty());
}

TEST_F(WireTest, InterruptedCallsAreRepeatedAndFailuresKeepTheirErrno) {
    kernel.outcomes = {0, EINTR, 0, EINTR, 0, EINTR, 0, EBUSY, EREMOTEIO, EBUSY};
    kernel.reads = {{0x6E, 0x88}};
    auto channel = services.create(onlyEntry());
    ASSERT_TRUE(channel);
    Bytes reply(11), edid(128);
    EXPECT_EQ(channel->writeI2C(0x37, 0x51, Bytes{0x82, 0x01, 0x10, 0xAC}), kI2COK);
    EXPECT_EQ(channel->readI2C(0x37, 0x51, reply), EIO) << "two bytes of eleven";
    EXPECT_EQ(channel->readI2C(0x50, 0x80, edid), EBUSY);
    EXPECT_EQ(channel->readI2C(0x37, 0x51, reply), EREMOTEIO);
    EXPECT_EQ(channel->writeI2C(0x50, 0x00, {}), EBUSY);
    EXPECT_EQ(channel->writeI2C(0x50, 0x00, {}), kI2COK) << "selects again after a failure";
    channel.reset();
    EXPECT_EQ(kernel.calls,
              (std::vector<std::string>{
                  "open i2c-4 O_RDWR|O_CLOEXEC", "ioctl I2C_SLAVE 37", "ioctl I2C_SLAVE 37",
                  "write 51 82 01 10 AC", "write 51 82 01 10 AC", "read 11", "read 11",
                  "ioctl I2C_RDWR w50[80] r50[128]", "read 11", "ioctl I2C_SLAVE 50",
                  "ioctl I2C_SLAVE 50", "write 00", "close"}));

    kernel.outcomes = {EACCES};
    EXPECT_FALSE(services.create(onlyEntry()));
    EXPECT_EQ(logged, (std::vector<std::string>{
                          "DDC/CI: no permission to open " + kernel.prefix +
                          "/i2c-4 (DP-1). Load the i2c-dev module (sudo modprobe i2c-dev) and "
                          "install Lumora's udev rule 60-lumora-i2c.rules, which lets the "
                          "logged-in user use the display buses without root; then log in "
                          "again."}));
}

}  // namespace
}  // namespace lumora::lx::test
