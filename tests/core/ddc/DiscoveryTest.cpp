#include <gtest/gtest.h>

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
};
using Pairs = std::map<DisplayID, std::uint64_t>;  // display -> registry entry (1-based)

constexpr Ids kDellA{0x10AC, 0xA0B1, 111}, kDellB{0x10AC, 0xA0B1, 222};
constexpr Ids kLG{0x1E6D, 0x5B08, 9};
constexpr Ids kPanel{0x0610, 0xA0C8, 0};

// The displays as the simulated display server reports them.
sim::World displaysWith(const std::vector<std::pair<DisplayID, Ids>>& displays) {
    sim::World world;
    for (const auto& [id, ids] : displays) {
        auto& d = world.displays.emplace_back();
        std::tie(d.id, d.vendor, d.model, d.serial) =
            std::tuple(id, ids.vendor, ids.model, ids.serial);
    }
    return world;
}

TEST(Discovery, PairsByEdidThenHandsTheRestOutInRegistryOrder) {
    struct Entry {
        const char* location;
        std::optional<Ids> edid;  // nothing: the EDID cannot be read
        bool creatable = true;
    };
    struct Case {
        const char* what;
        std::vector<Entry> registry;
        std::vector<std::pair<DisplayID, Ids>> asked;  // in the order asked
        Pairs expected;
    };
    const Ids dellNoSerial{0x10AC, 0xA0B1, 0};
    const Case cases[] = {
        {"identical monitors with distinct serials each get their own",
         {{"External", kDellB}, {"External", kDellA}},
         {{10, kDellA}, {11, kDellB}},
         {{10, 2}, {11, 1}}},
        {"display serial 0 matches any serial, identical monitors in registry order",
         {{"External", kLG}, {"External", kDellB}, {"External", kDellA}},
         {{11, dellNoSerial}, {10, dellNoSerial}},
         {{11, 2}, {10, 3}}},
        {"a serial no channel has falls back to the first of the model",
         {{"External", kDellA}, {"External", kDellB}},
         {{10, {0x10AC, 0xA0B1, 999}}, {11, kDellA}},
         {{10, 1}, {11, 2}}},
        {"non-External entries are never opened, nor are entries that cannot be created",
         {{"Embedded", kPanel},
          {"external", kPanel},
          {"", kPanel},
          {"External", kLG, false},
          {"External", kDellA}},
         {{1, kPanel}, {2, kLG}, {3, kDellA}},
         {{3, 5}}},
        {"unreadable EDIDs go to the unpaired displays in registry order",
         {{"External", std::nullopt}, {"External", kDellA}, {"External", std::nullopt}},
         {{10, kLG}, {11, kDellA}, {12, kPanel}, {13, kDellB}},
         {{10, 1}, {11, 2}, {12, 3}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        sim::VirtualScheduler clock;
        sim::SimMachine machine(displaysWith(c.asked), clock);
        test::FakeAVServices av{[&clock] { return clock.uptime(); }};
        std::vector<std::shared_ptr<test::ScriptedChannel>> channels;
        for (const auto& [location, edid, creatable] : c.registry) {
            channels.push_back(av.add(location, creatable));
            if (!edid) continue;
            const auto bytes = sim::makeEdid(edid->vendor, edid->model, edid->serial);
            channels.back()->edid = test::Bytes(bytes.begin(), bytes.end());
        }
        std::vector<DisplayID> asked;
        for (const auto& display : c.asked)
            asked.push_back(display.first);
        Pairs paired;
        for (const auto& [id, service] : DDC::services(av, machine.displayServer(), clock, asked)) {
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

}  // namespace
}  // namespace lumora
