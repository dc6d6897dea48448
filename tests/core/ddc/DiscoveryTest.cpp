#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "DdcFakes.h"
#include "ddc/DDC.h"
#include "sim/SimDdcMonitor.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

// EDID vendor, product and serial; the display server reports the same three numbers.
struct Ids {
    std::uint32_t vendor, model, serial;
    friend bool operator==(const Ids&, const Ids&) = default;
};
using Pairs = std::map<DisplayID, std::uint64_t>;  // display -> registry entry (1-based)

constexpr Ids kDellA{0x10AC, 0xA0B1, 111}, kDellB{0x10AC, 0xA0B1, 222};
constexpr Ids kLG{0x1E6D, 0x5B08, 9};
constexpr Ids kPanel{0x0610, 0xA0C8, 0};

TEST(Discovery, PairsByEdidThenHandsTheRestOutInRegistryOrder) {
    struct Entry {
        bool external;
        std::optional<Ids> edid;  // nothing: the EDID cannot be read
        bool creatable = true;
        std::optional<DisplayID> display = std::nullopt;  // the platform names the display
    };
    constexpr bool kExternal = true;
    struct Case {
        const char* what;
        std::vector<Entry> registry;
        std::vector<std::pair<DisplayID, Ids>> asked;  // in the order asked
        Pairs expected;
    };
    const Ids dellNoSerial{0x10AC, 0xA0B1, 0};
    const Case cases[] = {
        {"identical monitors with distinct serials each get their own",
         {{kExternal, kDellB}, {kExternal, kDellA}},
         {{10, kDellA}, {11, kDellB}},
         {{10, 2}, {11, 1}}},
        {"display serial 0 matches any serial, identical monitors in registry order",
         {{kExternal, kLG}, {kExternal, kDellB}, {kExternal, kDellA}},
         {{11, dellNoSerial}, {10, dellNoSerial}},
         {{11, 2}, {10, 3}}},
        {"a serial no channel has falls back to the first of the model",
         {{kExternal, kDellA}, {kExternal, kDellB}},
         {{10, {0x10AC, 0xA0B1, 999}}, {11, kDellA}},
         {{10, 1}, {11, 2}}},
        {"the built-in panel's channel is never opened, nor are entries that cannot be created",
         {{false, kPanel}, {kExternal, kLG, false}, {kExternal, kDellA}},
         {{1, kPanel}, {2, kLG}, {3, kDellA}},
         {{3, 3}}},
        {"a channel that names its display goes to it and is never guessed for another",
         {{kExternal, kDellA, true, 11},
          {kExternal, std::nullopt, true, 42},
          {kExternal, std::nullopt}},
         {{10, kDellA}, {11, kLG}, {12, kPanel}},
         {{11, 1}, {10, 3}}},
        {"unreadable EDIDs go to the unpaired displays in registry order",
         {{kExternal, std::nullopt}, {kExternal, kDellA}, {kExternal, std::nullopt}},
         {{10, kLG}, {11, kDellA}, {12, kPanel}, {13, kDellB}},
         {{10, 1}, {11, 2}, {12, 3}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        sim::VirtualScheduler clock;
        test::FakeAVServices av{[&clock] { return clock.uptime(); }};
        std::vector<std::shared_ptr<test::ScriptedChannel>> channels;
        for (const auto& [external, edid, creatable, display] : c.registry) {
            channels.push_back(av.add(external, creatable, display));
            if (!edid) continue;
            const auto bytes = sim::makeEdid(edid->vendor, edid->model, edid->serial);
            channels.back()->edid = test::Bytes(bytes.begin(), bytes.end());
        }
        std::vector<DDC::Target> asked;
        for (const auto& [id, ids] : c.asked)
            asked.push_back({id, ids.vendor, ids.model, ids.serial});
        Pairs paired;
        for (const auto& [id, service] : DDC::services(av, clock, asked)) {
            for (auto& channel : channels)
                channel->clear();
            service->write(0x10, 1);  // which channel it is shows on the wire
            for (std::size_t i = 0; i < channels.size(); ++i) {
                if (!channels[i]->transfers().empty()) paired[id] = i + 1;
            }
        }
        EXPECT_EQ(paired, c.expected);
    }
}

// Discovery and DDCService over the simulated machine's monitors: the EDID numbers, and the
// firmware faults of the broken-monitor world.
TEST(Discovery, OverTheSimulatedMonitorsEachFailsAsItsFirmwareSays) {
    using Reading = std::pair<std::uint16_t, std::uint16_t>;
    const char* folder = std::getenv("LUMORA_FIXTURES");
    ASSERT_NE(folder, nullptr);
    auto world = sim::loadWorldFile(std::filesystem::path(folder) / "brokenDdc.json").world;
    ASSERT_TRUE(world);
    sim::VirtualScheduler scheduler{1000.0};
    const auto discover = [&](sim::SimMachine& machine) {
        return DDC::services(machine.avServices(), scheduler,
                             DDC::targets(machine.displayServer(), {2, 3, 4}));
    };
    sim::SimMachine machine(*world, scheduler);
    auto found = discover(machine);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found.at(2)->edidSerial(), 201u);
    EXPECT_EQ(found.at(2)->read(0x10), std::nullopt) << "DDC/CI switched off in its menu";
    EXPECT_EQ(found.at(3)->edidVendor(), 0u) << "paired in the second pass";
    EXPECT_EQ(found.at(3)->read(0x12), (Reading{75, 100}));

    auto& flaky = *found.at(4);  // the first two read attempts of each request fail
    EXPECT_EQ((Ids{flaky.edidVendor(), flaky.edidProduct(), flaky.edidSerial()}),
              (Ids{7789, 30567, 203}));
    machine.clearWire();
    EXPECT_EQ(flaky.read(0x10), (Reading{50, 100}));
    EXPECT_EQ(machine.wire().size(), 6u) << "three attempts";
    EXPECT_EQ(flaky.read(0x10), (Reading{50, 100})) << "the next request starts over";

    // Three failures exhaust one read; asking again continues the same request.
    world->displays[3].ddc->failFirst = 3;
    sim::SimMachine worse(*world, scheduler);
    auto exhausted = discover(worse).at(4);
    EXPECT_EQ(exhausted->read(0x10), std::nullopt);
    EXPECT_EQ(exhausted->read(0x10), (Reading{50, 100}));
}

}  // namespace
}  // namespace lumora
