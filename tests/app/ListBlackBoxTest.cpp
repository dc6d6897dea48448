#include <gtest/gtest.h>

#include <sys/wait.h>
#include <array>
#include <cstdio>
#include <set>
#include <string>

#include <nlohmann/json.hpp>

#include "support/TestSupport.h"

namespace {

struct Run {
    int status = -1;
    std::string output;
};

// Runs the built program through the shell, standard error folded into the output unless
// `errorsApart`.
Run runLumora(const std::string& arguments, bool errorsApart = false) {
    Run run;
    std::string command =
        std::string(LUMORA_BINARY) + " " + arguments + (errorsApart ? " 2>/dev/null" : " 2>&1");
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.output.append(buffer.data(), n);
    int raw = pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return run;
}

TEST(ListBlackBox, BuiltInWorldShowsPanelDdcMonitorAndPlainMonitor) {
    auto run = runLumora("--simulate --list");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("3 display(s)"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("display 1 \"Built-in Retina Display\" (built-in, main, online)"),
              std::string::npos)
        << run.output;
    // Read over the simulated DDC/CI wire, not copied from the world.
    EXPECT_NE(run.output.find("DDC/CI: brightness 50/100 contrast 75/100 volume 30/100"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("DDC/CI: no channel"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("* 1512×982 HiDPI · 120 Hz"), std::string::npos) << run.output;
}

// Every key is always there, so scripts need not test for any.
TEST(ListBlackBox, JsonListingHasStableKeysAndTheValuesReadOverDdc) {
    using nlohmann::json;
    auto run = runLumora("--simulate --list --json", /*errorsApart=*/true);
    ASSERT_EQ(run.status, 0) << run.output;
    const json listing = json::parse(run.output, nullptr, false);
    ASSERT_FALSE(listing.is_discarded()) << run.output;

    EXPECT_EQ(listing["platform"], "simulated machine");
    ASSERT_EQ(listing["capabilities"].size(), 16u);
    EXPECT_EQ(listing["capabilities"]["ddc"], true);
    EXPECT_EQ(listing["capabilities"]["lidSwitch"], false);
    ASSERT_EQ(listing["displays"].size(), 3u);

    const std::set<std::string> displayKeys = {
        "id",    "name",   "builtin",  "main", "virtual", "online",    "asleep", "vendor",
        "model", "serial", "rotation", "mode", "modes",   "backlight", "ddc"};
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
    EXPECT_EQ(listing["displays"][2]["ddc"], nullptr);  // a monitor without DDC/CI

    EXPECT_EQ(runLumora("--simulate --json").status, 2);
}

TEST(ListBlackBox, BrokenWorldFileGivesOneErrorLineAndStatusTwo) {
    lumora::test::TempDir dir;
    lumora::test::writeFile(dir / "world.json", "{ \"displays\": [ { \"id\": \"one\" } ] }");
    auto run = runLumora("--simulate=" + (dir / "world.json").string() + " --list");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
    EXPECT_NE(run.output.find("world.json"), std::string::npos) << run.output;

    lumora::test::writeFile(dir / "garbage.json", "\x01\x02{{{");
    run = runLumora("--simulate=" + (dir / "garbage.json").string() + " --list");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.output.find("garbage.json"), std::string::npos) << run.output;

    run = runLumora("--simulate=" + (dir / "missing.json").string() + " --list");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.output.find("missing.json"), std::string::npos) << run.output;
}

TEST(ListBlackBox, UnknownArgumentIsRefusedWithUsage) {
    auto run = runLumora("--bogus");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.output.find("usage: lumora"), std::string::npos);
}

}  // namespace
