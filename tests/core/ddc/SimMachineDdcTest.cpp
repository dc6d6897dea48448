#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "ddc/DDC.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using Reading = std::pair<std::uint16_t, std::uint16_t>;
using Bytes = std::vector<std::uint8_t>;

constexpr double kStart = 1000.0;
constexpr DisplayID kOffice = 2;

// The default world: the laptop panel (1), the office monitor with DDC/CI (2) and a
// projector without it (3). `tweak` configures the office monitor's firmware.
struct Office {
    explicit Office(const std::function<void(sim::WorldDdc&)>& tweak = {})
        : machine(world(tweak), scheduler) {}

    static sim::World world(const std::function<void(sim::WorldDdc&)>& tweak) {
        auto world = sim::defaultWorld();
        if (tweak) tweak(*world.displays.at(1).ddc);
        return world;
    }
    // The candidates the model asks about: the external displays, in online order.
    std::map<DisplayID, std::shared_ptr<DDCService>> discover() {
        return DDC::services(machine.avServices(), machine.displayServer(), scheduler, {2, 3});
    }
    std::shared_ptr<DDCService> open() { return discover()[kOffice]; }
    long reads() const {
        const auto wire = machine.wire();
        return std::count_if(wire.begin(), wire.end(), [](const sim::WireEvent& e) {
            return e.kind == sim::WireEvent::Kind::read;
        });
    }

    sim::VirtualScheduler scheduler{kStart};
    sim::SimMachine machine;
};

TEST(SimMachineDdc, DiscoveryFindsTheOfficeMonitorAndReadsAndSetsIt) {
    Office office;
    auto channels = office.discover();
    ASSERT_EQ(channels.size(), 1u);
    ASSERT_TRUE(channels.contains(kOffice));
    auto& monitor = *channels.at(kOffice);
    EXPECT_EQ(monitor.edidVendor(), 4268u);
    EXPECT_EQ(monitor.edidProduct(), 41234u);
    EXPECT_EQ(monitor.edidSerial(), 12345u);

    EXPECT_EQ(monitor.read(0x10), (Reading{50, 100}));
    EXPECT_EQ(monitor.read(0x60), (Reading{15, 255}));
    EXPECT_EQ(monitor.read(0xD6), (Reading{1, 5}));
    EXPECT_EQ(monitor.read(0x16), std::nullopt) << "a gain the monitor lacks";

    office.machine.clearWire();
    const double start = office.scheduler.uptime();
    EXPECT_TRUE(monitor.write(0x10, 70));
    const auto wire = office.machine.wire();
    ASSERT_EQ(wire.size(), 2u);
    const Bytes packet{0x84, 0x03, 0x10, 0x00, 0x46, 0xB8 ^ 0x10 ^ 0x46};
    for (std::size_t i = 0; i < wire.size(); ++i) {
        EXPECT_EQ(wire[i].display, kOffice);
        EXPECT_EQ(wire[i].bytes, packet);
        EXPECT_EQ(wire[i].status, 0);
        EXPECT_NEAR(wire[i].time, start + 0.010 * static_cast<double>(i + 1), 1e-9);
    }
    const auto displays = office.machine.state()["displays"];
    auto found = std::find_if(displays.begin(), displays.end(),
                              [](const auto& display) { return display["id"] == kOffice; });
    ASSERT_NE(found, displays.end());
    EXPECT_EQ((*found)["vcp"]["0x10"], 70);
    EXPECT_EQ(monitor.read(0x10), (Reading{70, 100}));
}

TEST(SimMachineDdc, SwitchedOffMonitorKeepsItsEdidButNeverAnswers) {
    Office office([](sim::WorldDdc& ddc) { ddc.answers = false; });
    auto monitor = office.open();
    ASSERT_TRUE(monitor);
    EXPECT_EQ(monitor->edidSerial(), 12345u);
    EXPECT_EQ(monitor->read(0x10), std::nullopt);
    EXPECT_FALSE(monitor->write(0x10, 70));
    EXPECT_EQ(office.machine.state()["displays"][1]["vcp"]["0x10"], 50);
}

TEST(SimMachineDdc, MonitorWithoutEdidIsStillPairedAndUsable) {
    Office office([](sim::WorldDdc& ddc) { ddc.edid = false; });
    auto monitor = office.open();
    ASSERT_TRUE(monitor);
    EXPECT_EQ(monitor->edidVendor(), 0u);
    EXPECT_EQ(monitor->read(0x12), (Reading{75, 100}));
}

TEST(SimMachineDdc, FailFirstTwoSucceedsOnTheThirdAttempt) {
    Office office([](sim::WorldDdc& ddc) { ddc.failFirst = 2; });
    auto monitor = office.open();
    ASSERT_TRUE(monitor);
    EXPECT_EQ(monitor->edidProduct(), 41234u) << "EDID on the third read";
    EXPECT_NEAR(office.scheduler.uptime(), kStart + 0.020, 1e-9);

    office.machine.clearWire();
    EXPECT_EQ(monitor->read(0x10), (Reading{50, 100}));
    EXPECT_EQ(office.reads(), 3);
    EXPECT_NEAR(office.scheduler.uptime(), kStart + 0.020 + 0.180, 1e-9);
    // The next request starts over.
    EXPECT_EQ(monitor->read(0x10), (Reading{50, 100}));
    EXPECT_EQ(office.reads(), 6);
}

TEST(SimMachineDdc, FailFirstThreeExhaustsOneReadButNotTheNext) {
    Office office([](sim::WorldDdc& ddc) { ddc.failFirst = 3; });
    auto monitor = office.open();
    ASSERT_TRUE(monitor);
    EXPECT_EQ(monitor->edidVendor(), 0u);
    EXPECT_EQ(monitor->read(0x10), std::nullopt);
    // Asking again for the same code continues the same request, whose failures are spent.
    EXPECT_EQ(monitor->read(0x10), (Reading{50, 100}));
}

}  // namespace
}  // namespace lumora
