#include <gtest/gtest.h>

#include "SimTestSupport.h"
#include "support/TestSupport.h"

namespace lumora::sim::test {
namespace {

using nlohmann::json;

std::uint8_t checksum(std::initializer_list<std::uint8_t> bytes) {
    std::uint8_t sum = 0x6E ^ 0x51;
    for (auto b : bytes)
        sum ^= b;
    return sum;
}

GammaRamps halfRamp() {
    GammaRamps table;
    for (int i = 0; i < 256; ++i) {
        const float v = static_cast<float>(i) / 255.0f * 0.5f;
        table.red.push_back(v);
        table.green.push_back(v);
        table.blue.push_back(v);
    }
    return table;
}

TEST(State, FreshExampleWorld) {
    Bench bench(worldFrom(kExampleWorld));
    EXPECT_EQ(bench.machine.state(), json::parse(R"({
      "displays": [
        { "id": 1, "online": true, "enabled": true, "main": true, "mode": 10, "origin": [0, 0],
          "mirrorOf": 0, "virtual": false, "backlight": 0.7, "gamma": "identity" },
        { "id": 2, "online": true, "enabled": true, "main": false, "mode": 20, "origin": [1512, 0],
          "mirrorOf": 0, "virtual": false, "gamma": "identity",
          "vcp": { "0x10": 50, "0x12": 75, "0x60": 15, "0x62": 30, "0xd6": 1 } },
        { "id": 3, "online": true, "enabled": true, "main": false, "mode": 30, "origin": [4072, 0],
          "mirrorOf": 0, "virtual": false, "gamma": "identity" }
      ],
      "virtualDisplays": [],
      "power": { "assertions": [], "displaySleeps": 0, "systemSleeps": 0, "userActivity": 0 }
    })"));
}

// The state of the description's example: a DDC brightness write, a dimmed panel, a virtual
// display and a power assertion, each through its port.
TEST(State, ExampleAfterChangesThroughEveryPort) {
    lumora::test::TempDir dir;
    Bench bench(worldFrom(kExampleWorld));
    const auto file = dir / "state.json";
    bench.machine.setStateFile(file);

    auto entries = bench.machine.avServices().entries();
    ASSERT_EQ(entries.size(), 2u);
    ASSERT_TRUE(entries[1].external);
    auto channel = bench.machine.avServices().create(entries[1]);
    ASSERT_TRUE(channel);
    const std::vector<std::uint8_t> set70 = {0x84, 0x03, 0x10,
                                             0x00, 0x46, checksum({0x84, 0x03, 0x10, 0x00, 0x46})};
    EXPECT_EQ(channel->writeI2C(0x37, 0x51, set70), 0);

    EXPECT_EQ(bench.machine.displayServer().setGamma(1, halfRamp()), kConfigOK);

    VirtualDisplayDescriptor descriptor;
    descriptor.name = "Lumora 1920×1080";
    descriptor.modes = {{1920, 1080}};
    descriptor.maxPixelsWide = 1920;
    descriptor.maxPixelsHigh = 1080;
    descriptor.product = 1;
    descriptor.serial = 1280114689;
    auto handle = bench.machine.virtualDisplays().create(descriptor);
    ASSERT_TRUE(handle);

    auto inhibition = bench.machine.power().inhibitIdleSleep("Lumora: external display connected");

    const json expected = json::parse(R"({
      "displays": [
        { "id": 1, "online": true, "enabled": true, "main": true, "mode": 10, "origin": [0, 0],
          "mirrorOf": 0, "virtual": false, "backlight": 0.7,
          "gamma": { "red": [0.0, 0.251, 0.5], "green": [0.0, 0.251, 0.5], "blue": [0.0, 0.251, 0.5] } },
        { "id": 2, "online": true, "enabled": true, "main": false, "mode": 20, "origin": [1512, 0],
          "mirrorOf": 0, "virtual": false, "gamma": "identity",
          "vcp": { "0x10": 70, "0x12": 75, "0x60": 15, "0x62": 30, "0xd6": 1 } },
        { "id": 3, "online": true, "enabled": true, "main": false, "mode": 30, "origin": [4072, 0],
          "mirrorOf": 0, "virtual": false, "gamma": "identity" },
        { "id": 100, "online": true, "enabled": true, "main": false, "mode": 1, "origin": [5992, 0],
          "mirrorOf": 0, "virtual": true, "gamma": "identity" }
      ],
      "virtualDisplays": [ { "id": 100, "name": "Lumora 1920×1080", "product": 1, "serial": 1280114689, "hiDPI": false } ],
      "power": { "assertions": ["Lumora: external display connected"], "displaySleeps": 0, "systemSleeps": 0, "userActivity": 0 }
    })");
    EXPECT_EQ(bench.machine.state(), expected);
    // The file follows every change on its own, pretty-printed with sorted keys.
    EXPECT_EQ(lumora::test::readFile(file), expected.dump(2) + "\n");
}

TEST(State, FileFollowsEachKindOfChange) {
    lumora::test::TempDir dir;
    Bench bench(worldFrom(kExampleWorld));
    const auto file = dir / "state.json";
    auto fromFile = [&] { return json::parse(lumora::test::readFile(file)); };

    bench.machine.setStateFile(file);
    EXPECT_EQ(fromFile(), bench.machine.state());

    bench.machine.setOnline(3, false);
    EXPECT_EQ(fromFile()["displays"][2]["online"], false);

    bench.machine.backlight().set(1, 0.25f);
    EXPECT_EQ(fromFile()["displays"][0]["backlight"], 0.25);

    bench.machine.displayServer().setGamma(2, halfRamp());
    EXPECT_TRUE(fromFile()["displays"][1]["gamma"].is_object());
    bench.machine.displayServer().resetGamma(2);
    EXPECT_EQ(fromFile()["displays"][1]["gamma"], "identity");

    bench.machine.power().sleepSystem();
    EXPECT_EQ(fromFile()["power"]["systemSleeps"], 1);
}

TEST(State, GammaShowsTheLoadedTableRounded) {
    Bench bench(worldFrom(kExampleWorld));
    GammaRamps table = halfRamp();
    table.red[255] = 0.87654f;
    table.blue[0] = 0.0004f;
    EXPECT_EQ(bench.machine.displayServer().setGamma(3, table), kConfigOK);
    EXPECT_EQ(
        bench.machine.state()["displays"][2]["gamma"],
        json::parse(
            R"({"red": [0.0, 0.251, 0.877], "green": [0.0, 0.251, 0.5], "blue": [0.0, 0.251, 0.5]})"));
    ASSERT_TRUE(bench.machine.gamma(3).has_value());
    EXPECT_EQ(bench.machine.gamma(3)->red[255], 0.87654f);
    EXPECT_FALSE(bench.machine.gamma(1).has_value());

    // Only an online display takes ramps, and only of its size.
    EXPECT_NE(bench.machine.displayServer().setGamma(42, table), kConfigOK);
    table.blue.pop_back();
    EXPECT_NE(bench.machine.displayServer().setGamma(3, table), kConfigOK);
    bench.machine.displayServer().resetGamma(3);
    EXPECT_FALSE(bench.machine.gamma(3).has_value());
    EXPECT_EQ(bench.machine.state()["displays"][2]["gamma"], "identity");
}

TEST(State, BacklightStoresWhatItIsGiven) {
    Bench bench(worldFrom(kExampleWorld));
    Backlight& backlight = bench.machine.backlight();
    EXPECT_TRUE(backlight.hasGet() && backlight.hasSet() && backlight.hasCanChange());
    float level = -1;
    EXPECT_EQ(backlight.get(1, level), 0);
    EXPECT_FLOAT_EQ(level, 0.7f);
    EXPECT_EQ(backlight.set(1, 0.015625f), 0);
    EXPECT_EQ(backlight.get(1, level), 0);
    EXPECT_EQ(level, 0.015625f);
    EXPECT_EQ(bench.machine.state()["displays"][0]["backlight"], 0.015625);
    EXPECT_TRUE(backlight.canChange(1));

    // Only the built-in panel has a backlight.
    EXPECT_NE(backlight.get(2, level), 0);
    EXPECT_NE(backlight.set(2, 0.5f), 0);
    EXPECT_FALSE(backlight.canChange(2));
    EXPECT_EQ(level, 0.015625f);
}

TEST(State, NoBacklightEntryPoints) {
    World world = worldFrom(kExampleWorld);
    world.backlightControl = false;
    Bench bench(world);
    Backlight& backlight = bench.machine.backlight();
    EXPECT_FALSE(backlight.hasGet() || backlight.hasSet() || backlight.hasCanChange());
    EXPECT_NE(backlight.set(1, 0.2f), 0);
    EXPECT_EQ(bench.machine.state()["displays"][0]["backlight"], 0.7);
}

}  // namespace
}  // namespace lumora::sim::test
