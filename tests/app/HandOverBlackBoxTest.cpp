#include <gtest/gtest.h>

#include "AgentHarness.h"

namespace lumora::test {
namespace {

double brightnessOf(const nlohmann::json& status, int id) {
    auto display = displayWithId(status, id);
    return display.is_null() ? -1.0 : display.value("brightness", -1.0);
}

TEST(HandOverBlackBox, HandedOverUrlReturnsOnlyAfterTheStatusFileIsWritten) {
    Home home;
    Agent agent(home);
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    ASSERT_TRUE(agent.ddcScanned()) << readFile(home.logFile());

    // No --simulate: the client only hands the URL over.
    auto run = runToEnd(home, {"lumora://brightness?display=2&value=70"});
    ASSERT_EQ(run.status, 0) << run.output;
    // Read once, at once: the command and its status write finished before the client left.
    auto status = readJson(home.statusFile());
    ASSERT_TRUE(status) << readFile(home.statusFile());
    EXPECT_DOUBLE_EQ(brightnessOf(*status, 2), 0.7);
    EXPECT_EQ(run.output, "");

    // The debounced DDC write reaches the simulated monitor's firmware a moment later.
    EXPECT_TRUE(eventually([&] {
        auto state = agent.state();
        return state && displayWithId(*state, 2)["vcp"].value("0x10", -1) == 70;
    })) << readFile(agent.stateFile());
    EXPECT_TRUE(eventually([&] {
        return contains(readFile(home.logFile()),
                        "url: brightness [\"display\": \"2\", \"value\": \"70\"]");
    })) << readFile(home.logFile());
    EXPECT_TRUE(agent.process().alive());
}

TEST(HandOverBlackBox, SecondPlainStartIsRefusedAndTheFirstKeepsRunning) {
    Home home;
    Agent agent(home);
    ASSERT_TRUE(agent.ready()) << agent.process().output();

    auto second = runToEnd(home, {"--simulate", "--headless"});
    ASSERT_EQ(second.status, 0) << second.output;
    EXPECT_TRUE(contains(second.output, "another Lumora is running; exiting")) << second.output;
    // The refused start did not start anything of its own.
    EXPECT_FALSE(contains(second.output, "lid: start")) << second.output;
    EXPECT_TRUE(contains(readFile(home.logFile()), "another Lumora is running; exiting"));

    EXPECT_TRUE(agent.process().alive());
    EXPECT_TRUE(home.agentAnswers());
    EXPECT_TRUE(agent.send("lumora://status"));
}

TEST(HandOverBlackBox, UrlGivenToTheFirstInstanceIsHandledOnceItRuns) {
    Home home;
    Agent agent(home, {"lumora://brightness?display=2&value=70"});
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    EXPECT_TRUE(eventually([&] {
        auto status = readJson(home.statusFile());
        return status && brightnessOf(*status, 2) == 0.7;
    })) << readFile(home.statusFile());
    // It stays on as the agent.
    EXPECT_TRUE(agent.process().alive());
    EXPECT_TRUE(eventually([&] {
        auto log = readFile(home.logFile());
        auto started = log.find("lid: start");
        auto url = log.find("url: brightness");
        return started != std::string::npos && url != std::string::npos && started < url;
    })) << readFile(home.logFile());
}

// With no agent running, a command starts one: it cannot hand back an exit status, so it says
// why the command did nothing, and then serves the commands that follow.
TEST(HandOverBlackBox, ShortCommandWithoutAgentStartsOneThatSaysWhyItDidNothing) {
    Home home;
    Agent agent(home, {"--print-status", "dim", "nosuch"});
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    EXPECT_TRUE(eventually([&] {
        return contains(agent.process().output(), "lumora: display not found: nosuch\n");
    })) << agent.process().output();
    EXPECT_TRUE(eventually([&] { return contains(agent.process().output(), "\"displays\": ["); }))
        << agent.process().output();
    EXPECT_TRUE(contains(readFile(home.logFile()), "url: dim [\"display\": \"nosuch\"]\n"));

    EXPECT_TRUE(agent.send("lumora://brightness?display=office&value=30"));
    auto status = readJson(home.statusFile());
    ASSERT_TRUE(status);
    EXPECT_DOUBLE_EQ(brightnessOf(*status, 2), 0.3);
    EXPECT_TRUE(agent.process().alive());
}

}  // namespace
}  // namespace lumora::test
