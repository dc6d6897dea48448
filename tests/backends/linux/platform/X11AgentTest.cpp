// The agent on a real X server (Xorg with the dummy driver), driven the way a user drives it:
// `lumora --list`, URL commands handed over to the running agent, a termination signal.
// xrandr is the independent witness of every change.
#include <gtest/gtest.h>

#include <csignal>

#include "../edid/EdidBuilder.h"
#include "../x11/X11Fixture.h"
#include "app/AgentHarness.h"

namespace lumora::lx::test {
namespace {

using lumora::test::contains;
using lumora::test::eventually;
using lumora::test::Home;

class X11Agent : public X11Fixture {
  protected:
    void SetUp() override {
        X11Fixture::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        light("DUMMY1", "1024x768", {"--right-of", "DUMMY0"});
        run({"xrandr", "--addmode", "DUMMY1", "800x600"});
        witness->setEdid("DUMMY1", makeEdid({.serial = 7, .name = "Side Monitor"}));
    }
    std::map<std::string, std::string> env() const { return {{"DISPLAY", display()}}; }
    XrandrOutput side() { return xrandr(display()).outputs["DUMMY1"]; }
    // The Brightness xrandr derives from DUMMY0's gamma ramps.
    std::string brightness() {
        const std::string verbose = run({"xrandr", "--verbose"});
        const auto at = verbose.find("Brightness: ");
        return at == std::string::npos ? "" : verbose.substr(at + 12, 4);
    }

    Home home;
};

TEST_F(X11Agent, ListsTheOutputsAndEveryCommandReachesTheServer) {
    const auto list = lumora::test::runToEnd(home, {"--list"}, env());
    EXPECT_EQ(list.status, 0) << list.output;
    EXPECT_TRUE(contains(list.output, "Linux: X11 (RandR 1.")) << list.output;
    EXPECT_TRUE(contains(list.output, "\"Side Monitor\"")) << list.output;
    EXPECT_TRUE(contains(list.output, "\"DUMMY0\"")) << list.output;

    lumora::test::Process agent(home, {"--headless"}, env());
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
    auto send = [&](const std::string& url) {
        const auto run = lumora::test::runToEnd(home, {url});
        EXPECT_EQ(run.status, 0) << url << "\n" << run.output;
    };
    const std::string at = side().geometry.substr(side().geometry.find('+'));

    send("lumora://main?display=side");
    EXPECT_TRUE(side().primary);
    send("lumora://mode?display=side&width=800&height=600");
    EXPECT_EQ(side().geometry, "800x600" + at);
    send("lumora://disconnect?display=side");
    EXPECT_EQ(side().geometry, "");
    send("lumora://connect?display=side");
    EXPECT_EQ(side().geometry, "800x600" + at) << "back exactly where it was";
    send("lumora://dim?display=DUMMY0&value=50");
    EXPECT_EQ(brightness(), "0.50");

    send("lumora://disconnect?display=side");
    agent.signal(SIGTERM);
    EXPECT_EQ(agent.waitExit(), 0) << agent.output();
    EXPECT_EQ(brightness(), "1.00");
    EXPECT_EQ(side().geometry, "800x600" + at);
}

}  // namespace
}  // namespace lumora::lx::test
