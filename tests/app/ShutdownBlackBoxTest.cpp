#include <gtest/gtest.h>

#include <csignal>

#include "AgentHarness.h"

namespace lumora::test {
namespace {

class ShutdownBlackBox : public ::testing::TestWithParam<int> {};

// Everything the program changed on the displays is undone on the way out.
TEST_P(ShutdownBlackBox, SignalUndoesDimDisconnectAndVirtualScreensAndExitsZero) {
    Home home;
    Agent agent(home);
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    ASSERT_TRUE(agent.send("lumora://dim?display=2&value=0.4"));
    ASSERT_TRUE(agent.send("lumora://disconnect?display=projector"));
    ASSERT_TRUE(agent.send("lumora://virtual?width=1920&height=1080&name=Demo"));

    auto before = agent.state();
    ASSERT_TRUE(before) << readFile(agent.stateFile());
    EXPECT_EQ(displayWithId(*before, 2)["gamma"]["red"], nlohmann::json({0.0, 0.201, 0.4}));
    EXPECT_EQ(displayWithId(*before, 3)["enabled"], false);
    ASSERT_EQ((*before)["virtualDisplays"].size(), 1u);
    EXPECT_EQ((*before)["virtualDisplays"][0]["name"], "Demo");

    agent.process().signal(GetParam());
    EXPECT_EQ(agent.process().waitExit(), 0) << agent.process().output();

    auto after = agent.state();
    ASSERT_TRUE(after) << readFile(agent.stateFile());
    EXPECT_EQ((*after)["virtualDisplays"], nlohmann::json::array());
    ASSERT_EQ((*after)["displays"].size(), 3u) << after->dump(2);
    for (const auto& display : (*after)["displays"]) {
        EXPECT_EQ(display["gamma"], "identity") << display.dump();
        EXPECT_EQ(display["enabled"], true) << display.dump();
        EXPECT_EQ(display["virtual"], false) << display.dump();
    }

    // Logged, in the order of the clean-up: the projector comes back after "Lumora quit".
    const std::string log = readFile(home.logFile());
    const auto quit = log.find(" Lumora quit\n");
    ASSERT_NE(quit, std::string::npos) << log;
    EXPECT_NE(log.find("display 3: connected (0)", quit), std::string::npos) << log;
    EXPECT_FALSE(home.agentAnswers());
    EXPECT_FALSE(std::filesystem::exists(home.socket()));
}

INSTANTIATE_TEST_SUITE_P(EachTerminationSignal, ShutdownBlackBox,
                         ::testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const ::testing::TestParamInfo<int>& param) {
                             switch (param.param) {
                                 case SIGTERM:
                                     return std::string("SIGTERM");
                                 case SIGINT:
                                     return std::string("SIGINT");
                                 default:
                                     return std::string("SIGHUP");
                             }
                         });

TEST(ShutdownBlackBoxAfterSignal, NextStartIsTheAgentAgain) {
    Home home;
    {
        Agent first(home);
        ASSERT_TRUE(first.ready()) << first.process().output();
        first.process().signal(SIGTERM);
        ASSERT_EQ(first.process().waitExit(), 0);
    }
    Agent second(home);
    ASSERT_TRUE(second.ready()) << second.process().output();
    EXPECT_FALSE(contains(second.process().output(), "another Lumora is running"));
}

}  // namespace
}  // namespace lumora::test
