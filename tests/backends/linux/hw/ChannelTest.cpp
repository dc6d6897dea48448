// LinuxAVServices' channels over scripted buses: what reaches the bus, how failures come
// back, and what a bus that cannot be opened tells the user.
#include <gtest/gtest.h>

#include <random>

#include "FakeI2c.h"
#include "ddc/DDCService.h"
#include "hw/LinuxAVServices.h"

namespace lumora::lx {
namespace {

using test::Bytes;

class NoSleep final : public Sleeper {
  public:
    void sleep(double /*seconds*/) override {}
};

class ChannelTest : public ::testing::Test {
  protected:
    std::shared_ptr<AVChannel> open(unsigned number = 4) {
        return services.create(AVServiceEntry{true, std::nullopt, number});
    }

    std::shared_ptr<test::FakeDevices> devices = std::make_shared<test::FakeDevices>();
    test::BusScript& bus = *devices->script;
    std::vector<std::string> logged;
    LinuxAVServices services{{.sysfsRoot = "/nonexistent",
                              .devRoot = "/dev",
                              .displayFor = nullptr,
                              .log = [this](const std::string& line) { logged.push_back(line); },
                              .devices = devices}};
};

TEST_F(ChannelTest, TransfersReachTheBusAsTheCoreMeansThemAndFailuresKeepTheirErrno) {
    auto channel = open();
    ASSERT_TRUE(channel);
    const Bytes setBrightness{0x84, 0x03, 0x10, 0x01, 0x32, 0x9B};
    bus.reads = {{kSysOK, {0x6E, 0x88}}, {kSysOK, {0x00, 0xFF}}, {EIO, {}}};
    bus.slaveErrors = {kSysOK, EBUSY};
    bus.writeErrors = {kSysOK, kSysOK, EREMOTEIO};
    Bytes reply(11), edid(128);

    EXPECT_EQ(channel->writeI2C(0x37, 0x51, setBrightness), kI2COK);
    EXPECT_EQ(channel->readI2C(0x37, 0x51, reply), kI2COK);
    EXPECT_EQ(channel->readI2C(0x50, 0x00, edid), kI2COK);
    EXPECT_EQ(channel->readI2C(0x50, 0x80, edid), EIO);
    EXPECT_EQ(channel->writeI2C(0x50, 0x00, {}), EBUSY);
    EXPECT_EQ(channel->writeI2C(0x50, 0x00, {}), kI2COK) << "selects again after a failure";
    EXPECT_EQ(channel->writeI2C(0x37, 0x51, setBrightness), EREMOTEIO);
    channel.reset();

    EXPECT_EQ(devices->opened, (std::vector<std::string>{"/dev/i2c-4"}));
    EXPECT_EQ(bus.calls,
              (std::vector<std::string>{"slave 37", "write 51 84 03 10 01 32 9B", "read 11",
                                        "transfer w50[00] r50[128]", "transfer w50[80] r50[128]",
                                        "slave 50", "slave 50", "write 00", "slave 37",
                                        "write 51 84 03 10 01 32 9B", "close"}));
    EXPECT_EQ(Bytes(reply.begin(), reply.begin() + 3), (Bytes{0x6E, 0x88, 0x00}));
    EXPECT_EQ(Bytes(edid.begin(), edid.begin() + 3), (Bytes{0x00, 0xFF, 0x00}));
}

TEST_F(ChannelTest, GarbageFromTheBusNeverCrashesAndReadsNothing) {
    std::mt19937 random(7);
    Bytes noise(128);
    for (auto& b : noise)
        b = static_cast<std::uint8_t>(random());
    const std::vector<std::pair<SysError, Bytes>> answers = {
        {kSysOK, noise},
        {kSysOK, Bytes(128, 0xFF)},
        {kSysOK, {}},
        {kSysOK, {0x6E, 0x88, 0x02, 0x00, 0x12, 0x00, 0x00, 0x64, 0x00, 0x32, 0x00}},  // code 0x12
        {kSysOK,
         {0x6E, 0x88, 0x02, 0x01, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0x00}},  // unsupported
        {EIO, {0x6E, 0x88, 0x02, 0x00, 0x10}},                                 // cut short
    };
    NoSleep sleeper;
    for (const auto& answer : answers) {
        bus.reads.assign(6, answer);
        auto service = DDCService::open(services, {true, std::nullopt, 4}, sleeper);
        ASSERT_TRUE(service);
        EXPECT_EQ(service->edidVendor(), 0u) << test::hexBytes(answer.second);
        EXPECT_EQ(service->read(0x10), std::nullopt) << test::hexBytes(answer.second);
    }
}

TEST_F(ChannelTest, ABusThatCannotBeOpenedIsExplainedOncePerBus) {
    devices->errors = {{"/dev/i2c-4", EACCES}, {"/dev/i2c-5", ENOENT}, {"/dev/i2c-6", EIO}};
    for (int round = 0; round < 2; ++round) {
        for (unsigned n : {4, 5, 6})
            EXPECT_FALSE(open(n)) << n;
    }
    const std::vector<std::string> expected = {
        "DDC/CI: no permission to open /dev/i2c-4. Load the i2c-dev module (sudo modprobe "
        "i2c-dev) and install Lumora's udev rule 60-lumora-i2c.rules, which lets the logged-in "
        "user use the display buses without root; then log in again.",
        "DDC/CI: /dev/i2c-5 is missing: the i2c-dev module is not loaded. Load it with sudo "
        "modprobe i2c-dev (Lumora's package loads it at boot).",
        "DDC/CI: cannot open /dev/i2c-6: Input/output error.",
    };
    EXPECT_EQ(logged, expected);
    EXPECT_EQ(services.problems(), expected);

    devices->errors.erase("/dev/i2c-4");
    EXPECT_TRUE(open(4));
    EXPECT_EQ(services.problems(),
              (std::vector<std::string>(expected.begin() + 1, expected.end())));
    EXPECT_EQ(logged.size(), expected.size());
}

}  // namespace
}  // namespace lumora::lx
