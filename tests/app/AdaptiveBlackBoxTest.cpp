// Adaptive brightness from outside: the room's light changes in the world file and the
// monitor follows; what the user corrects outlives the agent.
#include <gtest/gtest.h>

#include <csignal>

#include "AgentHarness.h"

namespace lumora::test {
namespace {

int officeBrightness(const Agent& agent) {
    auto state = agent.state();
    return state ? displayWithId(*state, 2)["vcp"].value("0x10", -1) : -1;
}

TEST(AdaptiveBlackBox, TheRoomDarkensTheMonitorAndACorrectionOutlivesARestart) {
    Home home;
    nlohmann::json world = nlohmann::json::parse(readFile(fixture("laptopAndExternal.json")));
    world["lightSensor"] = {{"lux", 300}};
    const std::filesystem::path worldFile = home / "world.json";
    writeFile(worldFile, world.dump());
    const auto learned = [&] {  // the correction at 20 lux, in the status file
        auto status = readJson(home.statusFile());
        return status && (*status)["adaptive"]["displays"]["2"]["points"].dump().find(
                             "[20.0,0.45]") != std::string::npos;
    };
    {
        Agent agent(home, {"--simulate=" + worldFile.string()});
        ASSERT_TRUE(agent.ready()) << agent.process().output();
        ASSERT_TRUE(agent.send("lumora://adaptive?value=sensor"));
        EXPECT_TRUE(eventually([&] { return officeBrightness(agent) == 59; }))
            << readFile(agent.stateFile());

        world["lightSensor"]["lux"] = 20;
        writeFile(worldFile, world.dump());
        EXPECT_TRUE(eventually([&] { return officeBrightness(agent) == 31; }))
            << readFile(agent.stateFile());

        ASSERT_TRUE(agent.send("lumora://brightness?display=2&value=45"));
        EXPECT_TRUE(eventually(learned)) << readFile(home.statusFile());
        agent.process().signal(SIGTERM);
        EXPECT_EQ(agent.process().waitExit(), 0) << agent.process().output();
    }
    // A new agent on a monitor back at its own 50 %: at 20 lux it goes where the user said.
    Agent agent(home, {"--simulate=" + worldFile.string()});
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    EXPECT_TRUE(eventually([&] { return officeBrightness(agent) == 45; }))
        << readFile(agent.stateFile()) << readFile(home.logFile());
    EXPECT_TRUE(contains(readFile(home.logFile()), "adaptive: sensor\n"));
    EXPECT_TRUE(eventually(learned)) << readFile(home.statusFile());
    const auto finished = runToEnd(home, {"adaptive", "loud"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_TRUE(contains(finished.output, "adaptive needs off, sync, sensor or schedule"))
        << finished.output;
}

}  // namespace
}  // namespace lumora::test
