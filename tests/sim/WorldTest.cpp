#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "SimTestSupport.h"
#include "support/TestSupport.h"

namespace lumora::sim::test {
namespace {

using Vcp = std::map<std::uint8_t, std::pair<std::uint16_t, std::uint16_t>>;

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
    EXPECT_EQ(world.displays[2].origin, (Point{1440, 0}));
    EXPECT_EQ(world.cursor, (Point{720, 450}));
    EXPECT_EQ(world.lid, (WorldLid{true, true, 110}));
    EXPECT_TRUE(world.virtualDisplays && world.disconnect && world.backlightControl &&
                world.accessibility);
    const WorldDisplay& panel = world.displays[1];
    EXPECT_EQ(panel.mode, 5);
    EXPECT_EQ(panel.backlight, 0.5);
    EXPECT_FALSE(panel.name || panel.ddc);
    EXPECT_EQ(panel.modes[1], (WorldMode{6, 1024, 640, 1024, 640, 0, true}));
    ASSERT_TRUE(world.displays[2].ddc);
    EXPECT_EQ(world.displays[2].ddc->vcp,
              (Vcp{{0x10, {50, 100}}, {0x12, {75, 100}}, {0x62, {30, 100}}}));
}

TEST(World, MainMovesToTheOriginAndTakesTheOthersAlong) {
    World world = worldFrom(R"({"main": 2, "displays": [
        {"id": 1, "origin": [0, 0], "rotation": 90, "modes": [{"id": 1, "width": 1000, "height": 500}]},
        {"id": 2, "origin": [500, 200], "modes": [{"id": 1, "width": 800, "height": 600}],
         "ddc": {"vcp": {"0XD6": [1, 5], "0x6": [0, 65535]}}}
    ]})");
    EXPECT_EQ(world.displays[1].ddc->vcp, (Vcp{{0x06, {0, 65535}}, {0xD6, {1, 5}}}));
    EXPECT_EQ(world.displays[0].origin, (Point{-500, -200}));
    EXPECT_EQ(world.displays[1].origin, (Point{0, 0}));
    EXPECT_EQ(world.cursor, (Point{400, 300}));
    EXPECT_FALSE(world.lid.has_value()) << "no built-in display: no lid sensor";
}

// One display with a single 10×10 mode and `fields` added to it.
std::string oneDisplay(const std::string& fields) {
    return R"({"displays": [{"id": 1, )" + fields +
           R"( "modes": [{"id": 1, "width": 10, "height": 10}]}]})";
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
        {R"({"displays": [{"id": 0, "modes": []}]})",
         "displays[0].id: expected an integer from 1 to 4294967295"},
        {R"({"displays": [{"id": 1}]})", "displays[0]: missing \"modes\""},
        {R"({"displays": [{"id": 1, "modes": []}]})",
         "displays[0].modes: expected a non-empty array"},
        {oneDisplay(R"("mode": 3,)"), "displays[0].mode: no mode with id 3"},
        {R"({"displays": [)" + display + "," + display + "]}",
         "displays[1].id: repeats an earlier display's id"},
        {oneDisplay(R"("rotation": 45,)"), "displays[0].rotation: expected 0, 90, 180 or 270"},
        {oneDisplay(R"("rotation": 4294967386,)"),
         "displays[0].rotation: expected 0, 90, 180 or 270"},
        {oneDisplay(R"("rotation": 90.0,)"), "displays[0].rotation: expected an integer"},
        {oneDisplay(R"("origin": [0],)"), "displays[0].origin: expected [x, y]"},
        {oneDisplay(R"("builtin": 1,)"), "displays[0].builtin: expected true or false"},
        {oneDisplay(R"("name": 5,)"), "displays[0].name: expected a string"},
        {oneDisplay(R"("ddc": {"vcp": {"0x1G": [1, 2]}},)"),
         "displays[0].ddc.vcp.0x1G: expected a code like \"0x10\""},
        {oneDisplay(R"("ddc": {"vcp": {"0x10": [1]}},)"),
         "displays[0].ddc.vcp.0x10: expected [current, maximum]"},
        {oneDisplay(R"("ddc": {"vcp": {"0x10": [1, 70000]}},)"),
         "displays[0].ddc.vcp.0x10[1]: expected an integer from 0 to 65535"},
        {oneDisplay(R"("ddc": [],)"), "displays[0].ddc: expected an object"},
        {oneDisplay(R"("ddc": {"wakeDeafSeconds": -1},)"),
         "displays[0].ddc.wakeDeafSeconds: expected a number from 0 to 3600"},
        {R"({"main": 5, "displays": [)" + display + "]}", "main: no display with id 5"},
        {R"({"cursor": [1, "x"], "displays": []})", "cursor[1]: expected a number"},
        {R"({"cursor": [1, 2e6], "displays": []})",
         "cursor[1]: expected a number from -1e+06 to 1e+06"},
        {R"({"colour": true, "displays": []})", "colour: unknown key"},
    };
    for (const auto& [text, error] : cases) {
        WorldResult result = parseWorld(text);
        EXPECT_FALSE(result.world.has_value()) << text;
        EXPECT_EQ(result.error, error) << text;
    }
}

TEST(World, BrokenTextIsRefusedOnOneReadableLine) {
    for (const std::string& text :
         {std::string("\xff\xfe\x00garbage\n\x01", 12),
          std::string("{\"displays\": [{\"id\": 1, \"name\": \"\xc3\x28\", \"modes\": []}]}")}) {
        WorldResult result = parseWorld(text);
        EXPECT_FALSE(result.world.has_value());
        EXPECT_TRUE(result.error.starts_with("not valid JSON: ")) << result.error;
        EXPECT_TRUE(std::all_of(result.error.begin(), result.error.end(), [](char c) {
            return c >= 0x20 && c < 0x7F;
        })) << result.error;
    }
    EXPECT_EQ(parseWorld("{").error,
              "not valid JSON: parse error at line 1, column 2: syntax error while parsing object "
              "key - unexpected end of input; expected string literal");
}

TEST(World, EveryFixtureLoadsAndFileErrorsNameTheFile) {
    const char* folder = std::getenv("LUMORA_FIXTURES");
    ASSERT_NE(folder, nullptr) << "LUMORA_FIXTURES is not set";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        WorldResult result = loadWorldFile(entry.path());
        EXPECT_TRUE(result.world.has_value()) << result.error;
        if (entry.path().filename() == "laptopAndExternal.json") {
            EXPECT_EQ(result.world, defaultWorld());
        }
    }

    lumora::test::TempDir dir;
    const auto file = dir / "world.json";
    lumora::test::writeFile(
        file, R"({"displays": [{"id": 1, "modes": [{"id": 1, "width": true, "height": 1}]}]})");
    EXPECT_EQ(loadWorldFile(file).error,
              file.string() + ": displays[0].modes[0].width: expected an integer");
    WorldResult missing = loadWorldFile(dir / "absent.json");
    EXPECT_FALSE(missing.world.has_value());
    EXPECT_EQ(missing.error, (dir / "absent.json").string() + ": cannot be opened");
}

}  // namespace
}  // namespace lumora::sim::test
