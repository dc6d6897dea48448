#include <gtest/gtest.h>

#include "AgentHarness.h"

namespace lumora::test {
namespace {

// A sleep and wake driven through the world file, as a user of the simulator would: the
// monitor forgets and ignores DDC/CI for 3 s, the wake resets every gamma table.
TEST(RestoreBlackBox, AfterAWakeTheMonitorGetsItsBrightnessBackAndSoftwareDimStays) {
    Home home;
    nlohmann::json world = nlohmann::json::parse(readFile(fixture("laptopAndExternal.json")));
    world["gammaResetOnWake"] = true;
    world["displays"][1]["ddc"]["forgetsOnWake"] = true;
    world["displays"][1]["ddc"]["wakeDeafSeconds"] = 3;
    const std::filesystem::path worldFile = home / "world.json";
    writeFile(worldFile, world.dump());
    Agent agent(home, {"--simulate=" + worldFile.string()});
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    ASSERT_TRUE(agent.ddcScanned()) << readFile(home.logFile());

    ASSERT_TRUE(agent.send("lumora://brightness?display=2&value=70"));
    ASSERT_TRUE(agent.send("lumora://dim?display=3&value=0.5"));
    const auto shows = [&](int brightness, bool dimmed) {
        auto state = agent.state();
        return state && displayWithId(*state, 2)["vcp"].value("0x10", -1) == brightness &&
               (displayWithId(*state, 3)["gamma"] != "identity") == dimmed;
    };
    ASSERT_TRUE(eventually([&] { return shows(70, true); })) << readFile(agent.stateFile());

    world["wakes"] = 1;
    const auto woke = std::chrono::steady_clock::now();
    writeFile(worldFile, world.dump());
    EXPECT_TRUE(eventually([&] {
        return contains(readFile(home.logFile()), "display 2: restored brightness 70 after wake");
    })) << readFile(home.logFile());
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - woke);
    RecordProperty("restoredAfterSeconds", std::to_string(seconds.count()));
    EXPECT_TRUE(shows(70, true)) << readFile(agent.stateFile());
    auto status = readJson(home.statusFile());
    ASSERT_TRUE(status);
    EXPECT_EQ((*status)["restoreAfterWake"], true);
}

}  // namespace
}  // namespace lumora::test
