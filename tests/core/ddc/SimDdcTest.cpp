// The simulated DDC/CI monitor: its firmware byte by byte, then end to end through discovery
// and DDCService over the simulated machine.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <numeric>

#include "DdcFakes.h"
#include "ddc/DDC.h"
#include "sim/SimDdcMonitor.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using test::Bytes;
using Reading = std::pair<std::uint16_t, std::uint16_t>;

class SimDdcMonitorTest : public ::testing::Test {
  protected:
    std::int32_t send(const Bytes& bytes) { return monitor.write(0x37, 0x51, bytes, now); }
    std::pair<std::int32_t, Bytes> receive() {
        Bytes buffer(11, 0);
        const auto status = monitor.read(0x37, 0x51, buffer, now);
        return {status, buffer};
    }
    std::uint16_t brightness() { return monitor.vcp().at(0x10).first; }

    sim::SimDdcMonitor monitor{sim::WorldDdc{}, 0x10AC, 0xA0B1, 0x12345678};
    double now = 1000.0;
};

TEST_F(SimDdcMonitorTest, EdidHasHeaderNumbersAndChecksum) {
    for (std::uint32_t serial : {0u, 0x12345678u, 0xFFFFFFFFu}) {
        const auto edid = sim::makeEdid(0x10AC, 0xA0B1, serial);
        EXPECT_EQ(std::accumulate(edid.begin(), edid.end(), 0u) % 256, 0u) << serial;
        EXPECT_EQ(Bytes(edid.begin(), edid.begin() + 12),
                  (Bytes{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x10, 0xAC, 0xB1, 0xA0}));
    }
    EXPECT_EQ(sim::makeEdid(0, 0, 0x12345678)[12], 0x78) << "serial little-endian";
}

TEST_F(SimDdcMonitorTest, ReplyIsReadyFortyMillisecondsAfterTheRequest) {
    const Bytes request{0x82, 0x01, 0x10, 0xAC};
    ASSERT_EQ(send(request), 0);
    now += 0.039;
    EXPECT_NE(receive().first, 0) << "too early";
    ASSERT_EQ(send(request), 0);
    now += 0.040;
    EXPECT_EQ(receive(),
              (std::pair<std::int32_t, Bytes>{
                  0, {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32, 0xF2}}));
}

TEST_F(SimDdcMonitorTest, SetVcpAppliesAndPacketsWithABadChecksumAreIgnored) {
    EXPECT_EQ(send({0x84, 0x03, 0x10, 0x00, 0x46, 0xEE}), 0);
    EXPECT_EQ(brightness(), 70);
    EXPECT_EQ(send({0x84, 0x03, 0x10, 0x00, 0x20, 0x00}), 0) << "acknowledged";
    EXPECT_EQ(brightness(), 70);
    send({0x82, 0x01, 0x10, 0xAD});  // a request with a bad checksum leaves nothing to answer
    now += 0.05;
    EXPECT_NE(receive().first, 0);
}

// Discovery over the simulated machine: display id -> channel.
std::map<DisplayID, std::shared_ptr<DDCService>> discover(sim::SimMachine& machine,
                                                          sim::VirtualScheduler& scheduler,
                                                          const std::vector<DisplayID>& ids) {
    return DDC::services(machine.avServices(), scheduler,
                         DDC::targets(machine.displayServer(), ids));
}

TEST(SimMachineDdc, DiscoveryFindsTheOfficeMonitorAndReadsAndSetsIt) {
    // The laptop panel (1), the office monitor with DDC/CI (2) and a projector without it (3).
    sim::VirtualScheduler scheduler{1000.0};
    sim::SimMachine machine(sim::defaultWorld(), scheduler);
    const auto found = discover(machine, scheduler, {2, 3});
    ASSERT_EQ(found.size(), 1u);
    auto& monitor = *found.at(2);
    EXPECT_EQ(monitor.edidVendor(), 4268u);
    EXPECT_EQ(monitor.edidProduct(), 41234u);
    EXPECT_EQ(monitor.edidSerial(), 12345u);
    EXPECT_EQ(monitor.read(0x60), (Reading{15, 255}));
    EXPECT_EQ(monitor.read(0x16), std::nullopt) << "a gain the monitor lacks";

    machine.clearWire();
    const double start = scheduler.uptime();
    EXPECT_TRUE(monitor.write(0x10, 70));
    const auto wire = machine.wire();
    ASSERT_EQ(wire.size(), 2u);
    for (std::size_t i = 0; i < wire.size(); ++i) {
        EXPECT_EQ(wire[i].display, 2u);
        EXPECT_EQ(wire[i].bytes, (Bytes{0x84, 0x03, 0x10, 0x00, 0x46, 0xEE}));
        EXPECT_EQ(wire[i].status, 0);
        EXPECT_NEAR(wire[i].time, start + 0.010 * static_cast<double>(i + 1), 1e-9);
    }
    EXPECT_EQ(machine.state()["displays"][1]["vcp"]["0x10"], 70);
    EXPECT_EQ(monitor.read(0x10), (Reading{70, 100}));
}

TEST(SimMachineDdc, BrokenMonitorsFailAsTheirFirmwareSays) {
    const char* folder = std::getenv("LUMORA_FIXTURES");
    ASSERT_NE(folder, nullptr);
    auto world = sim::loadWorldFile(std::filesystem::path(folder) / "brokenDdc.json").world;
    ASSERT_TRUE(world);
    sim::VirtualScheduler scheduler{1000.0};
    sim::SimMachine machine(*world, scheduler);
    auto found = discover(machine, scheduler, {2, 3, 4});
    ASSERT_EQ(found.size(), 3u);
    // Three failed EDID reads for the nameless monitor, two for the flaky one.
    EXPECT_NEAR(scheduler.uptime(), 1000.050, 1e-9);

    auto& silent = *found.at(2);  // DDC/CI switched off in its menu
    EXPECT_EQ(silent.edidSerial(), 201u);
    EXPECT_EQ(silent.read(0x10), std::nullopt);
    EXPECT_FALSE(silent.write(0x10, 70));
    auto& nameless = *found.at(3);  // paired in the second pass
    EXPECT_EQ(nameless.edidVendor(), 0u);
    EXPECT_EQ(nameless.read(0x12), (Reading{75, 100}));

    auto& flaky = *found.at(4);  // the first two read attempts of each request fail
    EXPECT_EQ(flaky.edidSerial(), 203u);
    machine.clearWire();
    EXPECT_EQ(flaky.read(0x10), (Reading{50, 100}));
    EXPECT_EQ(machine.wire().size(), 6u) << "three attempts";
    EXPECT_EQ(flaky.read(0x10), (Reading{50, 100})) << "the next request starts over";
    EXPECT_EQ(machine.wire().size(), 12u);

    // Three failures exhaust one read; asking again continues the same request.
    world->displays[3].ddc->failFirst = 3;
    sim::SimMachine worse(*world, scheduler);
    auto exhausted = discover(worse, scheduler, {2, 3, 4}).at(4);
    EXPECT_EQ(exhausted->edidVendor(), 0u);
    EXPECT_EQ(exhausted->read(0x10), std::nullopt);
    EXPECT_EQ(exhausted->read(0x10), (Reading{50, 100}));
}

}  // namespace
}  // namespace lumora
