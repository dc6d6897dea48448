#include <gtest/gtest.h>

#include "SimTestSupport.h"
#include "support/TestSupport.h"

namespace lumora::sim::test {
namespace {

TEST(World, DefaultsFillEverythingLeftOut) {
    World world = worldFrom(R"({"displays": [
        {"id": 4, "online": false,
         "modes": [{"id": 1, "width": 800, "height": 600}]},
        {"id": 7, "builtin": true, "modes": [{"id": 5, "width": 1440, "height": 900, "refresh": 60},
                                            {"id": 6, "width": 1024, "height": 640}]},
        {"id": 9, "modes": [{"id": 2, "width": 1920, "height": 1080}], "ddc": {}}
    ]})");
    ASSERT_EQ(world.displays.size(), 3u);
    // The first online display is main; the row 4, 7, 9 is shifted so that 7 sits at (0,0).
    EXPECT_EQ(world.main, 7u);
    EXPECT_EQ(world.displays[0].origin, (Point{-800, 0}));
    EXPECT_EQ(world.displays[1].origin, (Point{0, 0}));
    EXPECT_EQ(world.displays[2].origin, (Point{1440, 0}));
    EXPECT_EQ(world.cursor, (Point{720, 450}));
    ASSERT_TRUE(world.lid.has_value());
    EXPECT_EQ(*world.lid, (WorldLid{true, true, 110}));
    EXPECT_TRUE(world.virtualDisplays && world.disconnect && world.backlightControl &&
                world.accessibility);

    const WorldDisplay& panel = world.displays[1];
    EXPECT_EQ(panel.mode, 5);
    EXPECT_EQ(panel.backlight, 0.5);
    EXPECT_EQ(panel.serial, 0u);
    EXPECT_FALSE(panel.name.has_value());
    EXPECT_FALSE(panel.ddc.has_value());
    EXPECT_EQ(panel.modes[1], (WorldMode{6, 1024, 640, 1024, 640, 0, true}));
    EXPECT_FALSE(world.displays[0].online);

    ASSERT_TRUE(world.displays[2].ddc.has_value());
    const WorldDdc& ddc = *world.displays[2].ddc;
    EXPECT_TRUE(ddc.answers);
    EXPECT_TRUE(ddc.edid);
    EXPECT_EQ(ddc.failFirst, 0);
    EXPECT_EQ(ddc.vcp, (std::map<std::uint8_t, std::pair<std::uint16_t, std::uint16_t>>{
                           {0x10, {50, 100}}, {0x12, {75, 100}}, {0x62, {30, 100}}}));
}

TEST(World, MainMovesToTheOriginAndTakesTheOthersAlong) {
    World world = worldFrom(R"({"main": 2, "displays": [
        {"id": 1, "origin": [0, 0], "rotation": 90, "modes": [{"id": 1, "width": 1000, "height": 500}]},
        {"id": 2, "origin": [500, 200], "modes": [{"id": 1, "width": 800, "height": 600}]}
    ]})");
    EXPECT_EQ(world.displays[0].origin, (Point{-500, -200}));
    EXPECT_EQ(world.displays[1].origin, (Point{0, 0}));
    EXPECT_EQ(world.cursor, (Point{400, 300}));
    // No built-in display: no lid sensor.
    EXPECT_FALSE(world.lid.has_value());
}

TEST(World, GivenValuesAreKeptExactly) {
    World world = worldFrom(kExampleWorld);
    EXPECT_EQ(world.cursor, (Point{2000, 300}));
    ASSERT_TRUE(world.lid.has_value());
    EXPECT_EQ(world.lid->angle, 110);
    const WorldDisplay& monitor = world.displays[1];
    EXPECT_EQ(monitor.name, "Office Monitor");
    EXPECT_EQ(monitor.sizeMM, (Size{597, 336}));
    ASSERT_TRUE(monitor.ddc.has_value());
    EXPECT_EQ(monitor.ddc->vcp.size(), 5u);
    EXPECT_EQ(monitor.ddc->vcp.at(0xD6), (std::pair<std::uint16_t, std::uint16_t>{1, 5}));
    EXPECT_EQ(monitor.ddc->vcp.at(0x60), (std::pair<std::uint16_t, std::uint16_t>{15, 255}));
    EXPECT_EQ(world.displays[0].backlight, 0.7);
    EXPECT_EQ(world.displays[2].sizeMM, (Size{0, 0}));
}

TEST(World, EachMistakeGivesOneLineNamingThePlace) {
    const std::string display = R"({"id": 1, "modes": [{"id": 1, "width": 10, "height": 10}]})";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"([])", "expected a JSON object at the top"},
        {R"({})", "missing \"displays\""},
        {R"({"displays": {}})", "displays: expected an array"},
        {R"({"displays": [)" + display +
             R"(, {"id": 2, "modes": [{"id": 1, "width": "wide", "height": 1}]}]})",
         "displays[1].modes[0].width: expected an integer"},
        {R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": 1.5, "height": 1}]}]})",
         "displays[0].modes[0].width: expected an integer"},
        {R"({"displays": [{"id": 0, "modes": []}]})",
         "displays[0].id: expected an integer from 1 to 4294967295"},
        {R"({"displays": [{"id": 4294967296, "modes": []}]})",
         "displays[0].id: expected an integer from 1 to 4294967295"},
        {R"({"displays": [{"id": 1}]})", "displays[0]: missing \"modes\""},
        {R"({"displays": [{"id": 1, "modes": []}]})",
         "displays[0].modes: expected a non-empty array"},
        {R"({"displays": [{"id": 1, "mode": 3, "modes": [{"id": 1, "width": 10, "height": 10}]}]})",
         "displays[0].mode: no mode with id 3"},
        {R"({"displays": [)" + display + "," + display + "]}",
         "displays[1].id: repeats an earlier display's id"},
        {R"({"displays": [{"id": 1, "orgin": [0, 0], "modes": []}]})",
         "displays[0].orgin: unknown key"},
        {R"({"displays": [{"id": 1, "rotation": 45, "modes": []}]})",
         "displays[0].rotation: expected 0, 90, 180 or 270"},
        {R"({"displays": [{"id": 1, "origin": [0], "modes": []}]})",
         "displays[0].origin: expected [x, y]"},
        {R"({"displays": [{"id": 1, "builtin": 1, "modes": []}]})",
         "displays[0].builtin: expected true or false"},
        {R"({"displays": [{"id": 1, "name": 5, "modes": []}]})",
         "displays[0].name: expected a string"},
        {R"({"displays": [{"id": 1, "backlight": 1.5, "modes": [{"id": 1, "width": 10, "height": 10}]}]})",
         "displays[0].backlight: expected a number from 0 to 1"},
        {R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": 10, "height": 10}], "ddc": {"vcp": {"0x1G": [1, 2]}}}]})",
         "displays[0].ddc.vcp.0x1G: expected a code like \"0x10\""},
        {R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": 10, "height": 10}], "ddc": {"vcp": {"0x10": [1]}}}]})",
         "displays[0].ddc.vcp.0x10: expected [current, maximum]"},
        {R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": 10, "height": 10}], "ddc": {"vcp": {"0x10": [1, 70000]}}}]})",
         "displays[0].ddc.vcp.0x10[1]: expected an integer from 0 to 65535"},
        {R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": 10, "height": 10}], "ddc": []}]})",
         "displays[0].ddc: expected an object"},
        {R"({"main": 5, "displays": [)" + display + "]}", "main: no display with id 5"},
        {R"({"cursor": [1, "x"], "displays": []})", "cursor[1]: expected a number"},
        {R"({"lid": {"angle": "open"}, "displays": []})", "lid.angle: expected an integer"},
        {R"({"disconnect": "no", "displays": []})", "disconnect: expected true or false"},
        {R"({"colour": true, "displays": []})", "colour: unknown key"},
    };
    for (const auto& [text, error] : cases) {
        WorldResult result = parseWorld(text);
        EXPECT_FALSE(result.world.has_value()) << text;
        EXPECT_EQ(result.error, error) << text;
    }
}

TEST(World, BrokenTextIsRefusedOnOneReadableLine) {
    const std::vector<std::string> texts = {
        "",
        "{",
        "{\"displays\": [}",
        std::string("\xff\xfe\x00garbage\n\x01", 12),
        "{\"displays\": [{\"id\": 1, \"name\": \"\xc3\x28\", \"modes\": []}]}",
    };
    for (const auto& text : texts) {
        WorldResult result = parseWorld(text);
        EXPECT_FALSE(result.world.has_value());
        EXPECT_TRUE(result.error.starts_with("not valid JSON: ")) << result.error;
        EXPECT_EQ(result.error.find('\n'), std::string::npos);
        for (char c : result.error) {
            EXPECT_TRUE(c >= 0x20 && c < 0x7F) << result.error;
        }
    }
    EXPECT_EQ(parseWorld("{").error,
              "not valid JSON: parse error at line 1, column 2: syntax error while parsing object "
              "key - unexpected end of input; expected string literal");
}

TEST(World, FileErrorsNameTheFile) {
    lumora::test::TempDir dir;
    const auto file = dir / "world.json";
    lumora::test::writeFile(
        file, R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": true, "height": 1}]}]})");
    EXPECT_EQ(loadWorldFile(file).error,
              file.string() + ": displays[0].modes[0].width: expected an integer");

    const auto missing = dir / "absent.json";
    WorldResult result = loadWorldFile(missing);
    EXPECT_FALSE(result.world.has_value());
    EXPECT_EQ(result.error, missing.string() + ": cannot be opened");
}

TEST(World, FixturesLoadAndTheLaptopFixtureIsTheDefaultWorld) {
    EXPECT_EQ(fixtureWorld("laptopAndExternal.json"), defaultWorld());

    World single = fixtureWorld("singleExternal.json");
    ASSERT_EQ(single.displays.size(), 1u);
    EXPECT_FALSE(single.displays[0].builtin);
    EXPECT_TRUE(single.displays[0].ddc.has_value());
    EXPECT_FALSE(single.lid.has_value());

    World twins = fixtureWorld("twinMonitors.json");
    ASSERT_EQ(twins.displays.size(), 2u);
    EXPECT_EQ(twins.displays[0].vendor, twins.displays[1].vendor);
    EXPECT_EQ(twins.displays[0].model, twins.displays[1].model);
    EXPECT_NE(twins.displays[0].serial, twins.displays[1].serial);

    World broken = fixtureWorld("brokenDdc.json");
    ASSERT_EQ(broken.displays.size(), 4u);
    EXPECT_FALSE(broken.displays[1].ddc->answers);
    EXPECT_FALSE(broken.displays[2].ddc->edid);
    EXPECT_EQ(broken.displays[3].ddc->failFirst, 2);
}

TEST(World, DefaultWorldIsALaptopWithTwoMonitors) {
    World world = defaultWorld();
    ASSERT_EQ(world.displays.size(), 3u);
    EXPECT_EQ(world.main, 1u);
    EXPECT_EQ(world.cursor, (Point{756, 491}));
    EXPECT_TRUE(world.displays[0].builtin);
    EXPECT_EQ(world.displays[0].modes[0], (WorldMode{10, 1512, 982, 3024, 1964, 120, true}));
    EXPECT_EQ(world.displays[1].origin, (Point{1512, 0}));
    EXPECT_TRUE(std::any_of(
        world.displays[1].modes.begin(), world.displays[1].modes.end(),
        [](const WorldMode& m) { return m == WorldMode{22, 1280, 720, 2560, 1440, 60, true}; }));
    EXPECT_EQ(world.displays[1].ddc->vcp.size(), 5u);
    EXPECT_FALSE(world.displays[2].ddc.has_value());
    EXPECT_EQ(world.displays[2].origin, (Point{4072, 0}));
}

}  // namespace
}  // namespace lumora::sim::test
