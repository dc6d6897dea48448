#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>

#include "hw/I2cChannel.h"
#include "hw/I2cDevice.h"
#include "support/TestSupport.h"

namespace lumora::lx {
namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Another program on the same bus: takes the adapter file's lock, says so through the pipe,
// holds it a while, notes that it is done, and lets go.
pid_t otherProgram(const std::filesystem::path& bus, int ready, double holdSeconds) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    const int fd = ::open(bus.c_str(), O_RDWR | O_APPEND);
    if (fd < 0 || ::flock(fd, LOCK_EX) != 0) ::_exit(1);
    (void)!::write(ready, "L", 1);
    ::usleep(static_cast<useconds_t>(holdSeconds * 1e6));
    (void)!::write(fd, "other program done\n", 19);
    ::_exit(0);  // closing the file releases the lock
}

TEST(BusLock, AnotherProgramsTransactionIsWaitedForAndOneHeldTooLongIsReportedOnce) {
    test::TempDir dir;
    const auto bus = dir / "i2c-4";
    test::writeFile(bus, "");
    auto opened = systemI2cDevices()->open(bus.string());
    ASSERT_TRUE(opened.device);
    I2cDevice& device = *opened.device;

    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    char signal = 0;
    pid_t other = otherProgram(bus, pipe[1], 0.3);
    ASSERT_EQ(::read(pipe[0], &signal, 1), 1);
    // The other program's whole transaction happened before ours began.
    EXPECT_EQ(device.lock(2.0), kSysOK);
    EXPECT_EQ(contents(bus), "other program done\n");
    device.unlock();
    int status = 0;
    ::waitpid(other, &status, 0);

    // Held longer than we wait: EWOULDBLOCK, not a wait without end.
    other = otherProgram(bus, pipe[1], 0.3);
    ASSERT_EQ(::read(pipe[0], &signal, 1), 1);
    EXPECT_EQ(device.lock(0.05), EWOULDBLOCK);
    ::waitpid(other, &status, 0);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

// A bus whose lock is taken or free as the test says.
class LockedDevice final : public I2cDevice {
  public:
    explicit LockedDevice(const bool& free) : free_(free) {}
    SysError setSlave(std::uint8_t) override { return kSysOK; }
    SysError read(std::span<std::uint8_t>) override { return kSysOK; }
    SysError write(std::span<const std::uint8_t>) override { return kSysOK; }
    SysError transfer(std::span<const I2cMessage>) override { return kSysOK; }
    SysError lock(double) override { return free_ ? kSysOK : EWOULDBLOCK; }

  private:
    const bool& free_;
};

TEST(BusLock, AChannelOnABusHeldTooLongSkipsTheExchangeAndSaysSoOncePerSpell) {
    bool free = false;
    int reports = 0;
    I2cChannel channel(std::make_unique<LockedDevice>(free), [&reports] { ++reports; });
    EXPECT_FALSE(channel.beginExchange());
    EXPECT_FALSE(channel.beginExchange());
    EXPECT_EQ(reports, 1);
    free = true;
    EXPECT_TRUE(channel.beginExchange());
    channel.endExchange();
    free = false;
    EXPECT_FALSE(channel.beginExchange());
    EXPECT_EQ(reports, 2);
}

}  // namespace
}  // namespace lumora::lx
