#include <gtest/gtest.h>

#include "SimTestSupport.h"
#include "support/TestSupport.h"

namespace lumora::sim::test {
namespace {

using nlohmann::json;

// Half brightness on every channel, but for the last red entry.
GammaRamps halfRamp() {
    GammaRamps table;
    for (int i = 0; i < 256; ++i) {
        const float v = static_cast<float>(i) / 255.0f * 0.5f;
        for (auto* ramp : {&table.red, &table.green, &table.blue})
            ramp->push_back(v);
    }
    table.red[255] = 0.87654f;
    return table;
}

// The state file follows every change through a port, pretty-printed with sorted keys.
TEST(State, DefaultWorldAndAChangeThroughEachPort) {
    lumora::test::TempDir dir;
    Bench bench(defaultWorld());
    const auto file = dir / "state.json";
    bench.machine.setStateFile(file);
    const auto written = [&] { return json::parse(lumora::test::readFile(file)); };
    json expected = json::parse(R"({
      "displays": [
        { "id": 1, "online": true, "enabled": true, "main": true, "mode": 10, "origin": [0, 0],
          "mirrorOf": 0, "virtual": false, "backlight": 0.5, "gamma": "identity" },
        { "id": 2, "online": true, "enabled": true, "main": false, "mode": 20, "origin": [1512, 0],
          "mirrorOf": 0, "virtual": false, "gamma": "identity",
          "vcp": { "0x10": 50, "0x12": 75, "0x60": 15, "0x62": 30, "0xd6": 1 } },
        { "id": 3, "online": true, "enabled": true, "main": false, "mode": 30, "origin": [4072, 0],
          "mirrorOf": 0, "virtual": false, "gamma": "identity" }
      ],
      "virtualDisplays": [],
      "power": { "assertions": [], "displaySleeps": 0, "systemSleeps": 0, "userActivity": 0 }
    })");
    EXPECT_EQ(bench.machine.state(), expected);
    EXPECT_EQ(lumora::test::readFile(file), expected.dump(2) + "\n");

    auto entries = bench.machine.avServices().entries();
    ASSERT_EQ(entries.size(), 2u);
    auto channel = bench.machine.avServices().create(entries[1]);
    ASSERT_TRUE(channel);
    EXPECT_EQ(channel->writeI2C(0x37, 0x51,
                                std::vector<std::uint8_t>{0x84, 0x03, 0x10, 0x00, 0x46, 0xEE}),
              0);
    EXPECT_EQ(bench.machine.displayServer().setGamma(1, halfRamp()), kConfigOK);
    auto handle = bench.machine.virtualDisplays().create(descriptor(false));
    auto inhibition = bench.machine.power().inhibitIdleSleep("Lumora: external display connected");
    ASSERT_TRUE(handle && inhibition);

    expected["displays"][0]["gamma"] = json::parse(
        R"({"red": [0.0, 0.251, 0.877], "green": [0.0, 0.251, 0.5], "blue": [0.0, 0.251, 0.5]})");
    expected["displays"][1]["vcp"]["0x10"] = 70;
    expected["displays"].push_back(json::parse(R"({ "id": 100, "online": true, "enabled": true,
        "main": false, "mode": 1, "origin": [5992, 0], "mirrorOf": 0, "virtual": true,
        "gamma": "identity" })"));
    expected["virtualDisplays"] = json::parse(
        R"([{"id": 100, "name": "Lumora 1920×1080", "product": 1, "serial": 77, "hiDPI": false}])");
    expected["power"]["assertions"] = json::array({"Lumora: external display connected"});
    EXPECT_EQ(bench.machine.state(), expected);
    EXPECT_EQ(written(), expected);

    bench.machine.backlight().set(1, 0.015625f);
    EXPECT_EQ(written()["displays"][0]["backlight"], 0.015625);
    bench.machine.displayServer().resetGamma(1);
    EXPECT_EQ(written()["displays"][0]["gamma"], "identity");
}

TEST(State, GammaIsTakenOnlyByAnOnlineDisplayAndOnlyInItsSize) {
    Bench bench(defaultWorld());
    DisplayServer& server = bench.machine.displayServer();
    GammaRamps table = halfRamp();
    EXPECT_EQ(server.gammaRampSize(3), 256u);
    EXPECT_EQ(server.setGamma(3, table), kConfigOK);
    EXPECT_EQ(bench.machine.gamma(3)->red[255], 0.87654f) << "kept exactly; rounded in the state";
    EXPECT_NE(server.setGamma(42, table), kConfigOK);
    table.blue.pop_back();
    EXPECT_NE(server.setGamma(2, table), kConfigOK);
    EXPECT_FALSE(bench.machine.gamma(2).has_value());
}

}  // namespace
}  // namespace lumora::sim::test
