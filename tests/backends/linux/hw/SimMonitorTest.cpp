// End to end without hardware: the core's DDC code finds and drives the simulated monitor's
// firmware through discovery, LinuxAVServices and the channel.
#include <gtest/gtest.h>

#include "FakeI2c.h"
#include "SysfsTree.h"
#include "ddc/DDC.h"
#include "hw/LinuxAVServices.h"
#include "sim/SimDdcMonitor.h"
#include "sim/VirtualScheduler.h"

namespace lumora::lx {
namespace {

// The wire between an adapter and the simulated monitor, transfers as the kernel delivers
// them. A plain read carries no data address; the firmware wants the host's (0x51).
class SimMonitorBus final : public I2cDevice {
  public:
    SimMonitorBus(sim::SimDdcMonitor& monitor, sim::VirtualScheduler& clock)
        : monitor_(monitor), clock_(clock) {}

    SysError setSlave(std::uint8_t address) override {
        slave_ = address;
        return kSysOK;
    }
    SysError read(std::span<std::uint8_t> buffer) override {
        return acked(monitor_.read(slave_, 0x51, buffer, clock_.uptime()));
    }
    SysError write(std::span<const std::uint8_t> bytes) override {
        if (bytes.empty()) return EINVAL;
        return acked(monitor_.write(slave_, bytes[0], bytes.subspan(1), clock_.uptime()));
    }
    SysError transfer(std::span<const I2cMessage> m) override {  // offset write, then read
        if (m.size() != 2 || m[0].read || !m[1].read || m[0].bytes.size() != 1) return EINVAL;
        return acked(monitor_.read(m[1].address, m[0].bytes[0], m[1].bytes, clock_.uptime()));
    }

  private:
    static SysError acked(std::int32_t status) { return status == 0 ? kSysOK : ENXIO; }

    sim::SimDdcMonitor& monitor_;
    sim::VirtualScheduler& clock_;
    std::uint8_t slave_ = 0;
};

TEST(SimMonitorTest, CoreReadsAndSetsBrightnessOfTheSimulatedMonitor) {
    test::SysfsTree tree;
    tree.card("card0", "pci0000:00/0000:00:02.0");
    tree.connector("card0-DP-1", "connected", 4);
    tree.connector("card0-eDP-1", "connected", 2);
    sim::VirtualScheduler clock;
    sim::SimDdcMonitor monitor(sim::WorldDdc{}, 0x10AC, 0xA0B1, 0x1234);
    auto devices = std::make_shared<test::FakeDevices>();
    devices->make = [&] { return std::make_unique<SimMonitorBus>(monitor, clock); };
    LinuxAVServices services(
        {.sysfsRoot = tree.root(),
         .devRoot = kDefaultDevRoot,
         .displayFor = [](const std::string& connector) -> std::optional<DisplayID> {
             if (connector == "DP-1") return 7;
             return std::nullopt;
         },
         .log = nullptr,
         .devices = devices});

    auto found = DDC::services(services, clock, {DDC::Target{7, 0x10AC, 0xA0B1, 0x1234}});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(devices->opened, (std::vector<std::string>{"/dev/i2c-4"})) << "not the panel's bus";
    auto& service = found.at(7);
    EXPECT_EQ(service->edidProduct(), 0xA0B1u);
    EXPECT_EQ(service->read(0x10), (std::pair<std::uint16_t, std::uint16_t>{50, 100}));
    EXPECT_TRUE(service->write(0x10, 70));
    EXPECT_EQ(monitor.vcp().at(0x10).first, 70);
}

}  // namespace
}  // namespace lumora::lx
