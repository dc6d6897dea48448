// `lumora --list` as scripts and people read it, on the built-in and on broken worlds.
#include <gtest/gtest.h>

#include <set>

#include "AgentHarness.h"

namespace lumora::test {
namespace {

TEST(ListBlackBox, BuiltInWorldShowsPanelDdcMonitorAndPlainMonitor) {
    Home home;
    auto run = runToEnd(home, {"--simulate", "--list"});
    ASSERT_EQ(run.status, 0) << run.output;
    for (const char* line :
         {"3 display(s)", "display 1 \"Built-in Retina Display\" (built-in, main, online)",
          // Read over the simulated DDC/CI wire, not copied from the world.
          "DDC/CI: brightness 50/100 contrast 75/100 volume 30/100", "DDC/CI: no channel",
          "* 1512×982 HiDPI · 120 Hz"}) {
        EXPECT_TRUE(contains(run.output, line)) << line << "\n" << run.output;
    }
}

// Every key is always there, so scripts need not test for any.
TEST(ListBlackBox, JsonListingHasStableKeysAndTheValuesReadOverDdc) {
    using nlohmann::json;
    Home home;
    auto run = runToEnd(home, {"--simulate", "--list", "--json"}, {}, /*errorsApart=*/true);
    ASSERT_EQ(run.status, 0) << run.error;
    const json listing = json::parse(run.output, nullptr, false);
    ASSERT_FALSE(listing.is_discarded()) << run.output;

    EXPECT_EQ(listing["platform"], "simulated machine");
    EXPECT_EQ(listing["capabilities"]["ddc"], true);
    EXPECT_EQ(listing["capabilities"]["lidSwitch"], false);
    ASSERT_EQ(listing["displays"].size(), 3u);

    const std::set<std::string> displayKeys = {
        "id",     "name",      "builtin", "main",       "virtual",        "online",
        "asleep", "vendor",    "model",   "serial",     "rotation",       "mode",
        "modes",  "backlight", "ddc",     "ddcMissing", "ddcCapabilities"};
    for (const json& d : listing["displays"]) {
        std::set<std::string> keys;
        for (const auto& [key, value] : d.items())
            keys.insert(key);
        EXPECT_EQ(keys, displayKeys) << d.dump();
    }
    const json& panel = listing["displays"][0];
    EXPECT_EQ(panel["name"], "Built-in Retina Display");
    EXPECT_EQ(panel["backlight"], 0.5);
    EXPECT_EQ(panel["ddc"], nullptr);
    EXPECT_EQ(panel["modes"].size(), 6u);
    EXPECT_EQ(panel["mode"], (json{{"id", 10},
                                   {"width", 1512},
                                   {"height", 982},
                                   {"pixelWidth", 3024},
                                   {"pixelHeight", 1964},
                                   {"refresh", 120.0},
                                   {"hidpi", true},
                                   {"label", "1512×982 HiDPI · 120 Hz"}}));

    const json& office = listing["displays"][1];
    EXPECT_EQ(office["backlight"], nullptr);
    EXPECT_EQ(office["ddc"], (json{{"brightness", {{"value", 50}, {"max", 100}}},
                                   {"contrast", {{"value", 75}, {"max", 100}}},
                                   {"volume", {{"value", 30}, {"max", 100}}}}));
    EXPECT_EQ(office["ddcMissing"], json::object());
    // What its capabilities string lists: codes with the values it names, two hex digits each.
    const json& caps = office["ddcCapabilities"];
    EXPECT_EQ(caps["model"], "Office Monitor");
    EXPECT_EQ(caps["mccs"], "2.2");
    EXPECT_EQ(caps["vcp"]["0x10"], json::array());
    EXPECT_EQ(caps["vcp"]["0x60"], (json{"0x0f", "0x11", "0x12"}));
    EXPECT_EQ(caps["vcp"].size(), 21u);
    EXPECT_EQ(listing["displays"][2]["ddc"], nullptr);  // a monitor without DDC/CI
    EXPECT_EQ(listing["displays"][2]["ddcMissing"], nullptr);
    EXPECT_EQ(listing["displays"][2]["ddcCapabilities"], nullptr);
}

// A value the monitor does not give says why: it lacks the code, or it does not answer.
TEST(ListBlackBox, AMissingDdcValueSaysWhy) {
    using nlohmann::json;
    Home home;
    json world = json::parse(readFile(fixture("laptopAndExternal.json")));
    world["displays"][1]["ddc"]["vcp"].erase("0x62");
    writeFile(home / "world.json", world.dump());
    world["displays"][1]["ddc"]["answers"] = false;
    writeFile(home / "silent.json", world.dump());
    for (const auto& [file, missing] :
         {std::pair{"world.json", json{{"volume", "unsupported code"}}},
          std::pair{"silent.json", json{{"brightness", "no reply"},
                                        {"contrast", "no reply"},
                                        {"volume", "no reply"}}}}) {
        auto run = runToEnd(home, {"--simulate=" + (home / file).string(), "--list", "--json"}, {},
                            /*errorsApart=*/true);
        ASSERT_EQ(run.status, 0) << run.error;
        const json listing = json::parse(run.output, nullptr, false);
        ASSERT_FALSE(listing.is_discarded()) << run.output;
        EXPECT_EQ(listing["displays"][1]["ddcMissing"], missing) << file;
        EXPECT_EQ(listing["displays"][1]["ddc"]["volume"], nullptr);
    }
    const auto text = runToEnd(home, {"--simulate=" + (home / "world.json").string(), "--list"});
    EXPECT_TRUE(contains(text.output, " volume (unsupported code)")) << text.output;
}

TEST(ListBlackBox, BrokenWorldFileGivesOneErrorLineAndStatusTwo) {
    Home home;
    writeFile(home / "world.json", "{ \"displays\": [ { \"id\": \"one\" } ] }");
    writeFile(home / "garbage.json", "\x01\x02{{{");
    for (const char* name : {"world.json", "garbage.json", "missing.json"}) {
        auto run = runToEnd(home, {"--simulate=" + (home / name).string(), "--list"});
        EXPECT_EQ(run.status, 2) << name;
        EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
        EXPECT_TRUE(contains(run.output, name)) << run.output;
    }
}

}  // namespace
}  // namespace lumora::test
