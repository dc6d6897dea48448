// The agent in a wlroots session (a real headless sway): it drives the outputs through the
// output-management protocol, and ends with status 3 when the compositor dies.
#include <gtest/gtest.h>

#include <chrono>

#include "app/AgentHarness.h"
#include "backends/linux/wayland/wlroots/SwaySession.h"

namespace lumora::wltest {
namespace {

using lumora::test::contains;
using lumora::test::eventually;
using lumora::test::Home;

TEST(WlrootsAgent, EndsWithStatus3WhenTheCompositorDies) {
    SwaySession sway;
    if (!sway.problem().empty()) GTEST_SKIP() << sway.problem();
    Home home;
    const std::map<std::string, std::string> env{{"WAYLAND_DISPLAY", sway.waylandSocket()},
                                                 {"XDG_CURRENT_DESKTOP", "sway"}};
    const auto list = lumora::test::runToEnd(home, {"--list"}, env);
    EXPECT_TRUE(contains(list.output, "wlroots (output management)")) << list.output;
    lumora::test::Process agent(home, {"--headless"}, env);
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();

    sway.kill();
    EXPECT_EQ(agent.waitExit(std::chrono::seconds(2)), 3) << agent.output();
    EXPECT_TRUE(contains(lumora::test::readFile(home.logFile()), "display server lost\n"));
    EXPECT_EQ(lumora::test::readJson(home.statusFile())->value("running", true), false);
}

}  // namespace
}  // namespace lumora::wltest
