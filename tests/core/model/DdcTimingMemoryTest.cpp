// The waits a monitor's wire needs, learned once and kept across starts.
#include <gtest/gtest.h>

#include <tuple>

#include "ModelScenario.h"
#include "model/DdcCapabilityMemory.h"
#include "model/DdcTimingMemory.h"

namespace lumora::test {
namespace {

class LearnedTiming : public ModelScenario {
  protected:
    // twinMonitors' display 2 answers in 5 ms; display 3 keeps the usual 40 ms.
    void startFast() {
        sim::World world = fixtureWorld("twinMonitors.json");
        world.displays[0].ddc->replyDelay = 0.005;
        start(std::move(world));
    }
    std::size_t count(const std::string& line) {
        const auto lines = logged();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }
};

TEST_F(LearnedTiming, IsLearnedFromTheScansSaidOnceKeptAcrossARestartAndACorruptStoreCostsNothing) {
    startFast();
    for (int scan = 0; scan < 12; ++scan) {
        model->ddc().rescan();
        clock.advance(5);
    }
    const std::string learned =
        "DDC display 2: learned waits 6 ms before a message, 6 ms for a reply";
    EXPECT_EQ(count("DDC display 2: an exchange failed; back to 50 ms before a message, 50 ms for "
                    "a reply"),
              1u);
    EXPECT_EQ(count(learned), 1u);
    const auto stored = defaults.jsonData(DdcTimingMemory::kKey);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->size(), 1u) << stored->dump() << ": the slow twin learns nothing below 50 ms";
    const std::string key = stored->begin().key();

    // The next start begins where this one ended: nothing to learn, nothing said.
    startFast();
    for (int scan = 0; scan < 3; ++scan) {
        model->ddc().rescan();
        clock.advance(5);
    }
    EXPECT_EQ(count(learned), 1u);
    EXPECT_EQ(defaults.jsonData(DdcTimingMemory::kKey), stored);

    // Waits outside what any monitor needs, or not numbers, are dropped: defaults again.
    defaults.setJsonData(DdcTimingMemory::kKey,
                         nlohmann::json::parse(R"({")" + key + R"(": [1, 0.5], "x": "fast"})"));
    DdcTimingMemory corrupt(defaults);
    EXPECT_EQ(corrupt.learned(key), std::nullopt);
    EXPECT_EQ(corrupt.learned("x"), std::nullopt);
    EXPECT_EQ(DdcTimingMemory(defaults).learned("nobody"), std::nullopt);
}

TEST_F(LearnedTiming, CapabilitiesAreAskedOncePerMonitorNotOncePerStartOrScan) {
    sim::World world = fixtureWorld("twinMonitors.json");
    world.displays[0].ddc->capabilities = "(prot(monitor)model(Twin)vcp(10 12))";
    const auto requests = [this] {
        std::size_t count = 0;
        for (const auto& e : machine->wire())
            count += e.bytes.size() == 5 && e.bytes[1] == 0xF3;
        return count;
    };
    start(world);
    model->ddc().rescan();
    clock.advance(5);
    // The first twin answers in two fragments and an empty one; the second has none and is
    // asked once (three attempts), not at every scan.
    EXPECT_EQ(requests(), 3u + 3u);
    const nlohmann::json stored = {{"4268-41234-1001", "(prot(monitor)model(Twin)vcp(10 12))"}};
    EXPECT_EQ(defaults.jsonData(DdcCapabilityMemory::kKey), stored);
    EXPECT_EQ(model->ddc().capabilities()->at(2).model, "Twin");
    EXPECT_FALSE(model->ddc().capabilities()->contains(3));

    start(world);  // the same settings: only the twin without one is asked again
    EXPECT_EQ(requests(), 3u);
    EXPECT_EQ(model->ddc().capabilities()->at(2).vcp.size(), 2u);
}

// Each monitor here has its own bus: writes to both go out at once, two to one take turns.
TEST_F(LearnedTiming, BusesRunInParallelAndOneBusTakesTurns) {
    start("twinMonitors.json");
    machine->clearWire();
    const double t0 = clock.uptime();
    model->ddc().set(2, VCP::brightness, 0.7, 100);
    model->ddc().set(3, VCP::brightness, 0.2, 100);
    model->ddc().set(2, VCP::contrast, 0.6, 100);
    clock.advance(1);
    // (display, code, ms after the sliders moved) of every Set VCP transmission.
    std::vector<std::tuple<DisplayID, int, long>> writes;
    for (const auto& e : machine->wire()) {
        if (e.bytes.size() == 6 && e.bytes[1] == kSetVcpOpcode)
            writes.emplace_back(e.display, e.bytes[2], std::lround((e.time - t0) * 1000));
    }
    std::sort(writes.begin(), writes.end(), [](const auto& a, const auto& b) {
        return std::tie(std::get<2>(a), std::get<0>(a)) < std::tie(std::get<2>(b), std::get<0>(b));
    });
    // 80 ms of debounce, then two transmissions per write, each after the 35 ms of quiet the
    // start-up scan's three good reads taught.
    EXPECT_EQ(writes, (std::vector<std::tuple<DisplayID, int, long>>{{2, 0x10, 115},
                                                                     {3, 0x10, 115},
                                                                     {2, 0x10, 150},
                                                                     {3, 0x10, 150},
                                                                     {2, 0x12, 185},
                                                                     {2, 0x12, 220}}));
}

TEST_F(LearnedTiming, AWriteThatFindsTheBusHeldGoesOutLaterUnlessANewerValueWasAsked) {
    start("twinMonitors.json");
    const auto brightness = [this] { return stateOf(2)["vcp"].value("0x10", -1); };
    machine->holdDdcBus(2, 2);  // both transmissions of the next write
    model->ddc().set(2, VCP::brightness, 0.7, 100);
    clock.advance(1);
    EXPECT_EQ(brightness(), 40) << "the bus was held";
    clock.advance(2);
    EXPECT_EQ(brightness(), 70);

    // Held again; the user moves on before the retry, and the newer value stays.
    machine->holdDdcBus(2, 2);
    model->ddc().set(2, VCP::brightness, 0.3, 100);
    clock.advance(1);
    model->ddc().set(2, VCP::brightness, 0.5, 100);
    clock.advance(5);
    EXPECT_EQ(brightness(), 50);
}

}  // namespace
}  // namespace lumora::test
