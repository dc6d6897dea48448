// The agent on a real X server (Xorg with the dummy driver), driven the way a user drives it:
// `lumora --list`, URL commands handed over to the running agent, a termination signal.
// xrandr is the independent witness of every change.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <csignal>

#include "../edid/EdidBuilder.h"
#include "../wayland/support/ServerProcess.h"
#include "../x11/X11Fixture.h"
#include "app/AgentHarness.h"

namespace lumora::lx::test {
namespace {

using lumora::test::contains;
using lumora::test::eventually;
using lumora::test::Home;
using lumora::test::readFile;

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
    // The Brightness xrandr derives from an output's gamma ramps.
    double brightness(const std::string& output = "DUMMY0") {
        const std::string verbose = run({"xrandr", "--verbose"});
        const auto section = verbose.find(output + " connected");
        const auto at = verbose.find("Brightness: ", section);
        return section == std::string::npos || at == std::string::npos
                   ? -1
                   : std::stod(verbose.substr(at + 12));
    }

    void send(const std::string& url) {
        const auto run = lumora::test::runToEnd(home, {url});
        EXPECT_EQ(run.status, 0) << url << "\n" << run.output;
    }

    Home home;
};

TEST_F(X11Agent, ListsTheOutputsAndEveryCommandReachesTheServer) {
    const auto list = lumora::test::runToEnd(home, {"--list"}, env());
    EXPECT_EQ(list.status, 0) << list.output;
    EXPECT_TRUE(contains(list.output, "Linux: X11 (RandR 1.")) << list.output;
    EXPECT_TRUE(contains(list.output, "\"Side Monitor\"")) << list.output;

    lumora::test::Process agent(home, {"--headless"}, env());
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
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
    EXPECT_NEAR(brightness(), 0.5, 0.01);

    // The shortcut and the brightness key step the monitor under the pointer: DUMMY1 answers
    // no DDC/CI, so it is dimmed in software.
    const int sideX = std::stoi(at.substr(1));
    run({"xdotool", "mousemove", std::to_string(sideX + 100), "300"});
    run({"xdotool", "key", "ctrl+alt+super+Down"});
    EXPECT_TRUE(eventually([&] { return std::abs(brightness("DUMMY1") - 0.9375) < 0.01; }))
        << brightness("DUMMY1") << "\n"
        << agent.output();
    run({"xdotool", "key", "XF86MonBrightnessDown"});
    EXPECT_TRUE(eventually([&] { return std::abs(brightness("DUMMY1") - 0.875) < 0.01; }))
        << brightness("DUMMY1") << "\n"
        << agent.output();

    send("lumora://disconnect?display=side");
    agent.signal(SIGTERM);
    EXPECT_EQ(agent.waitExit(), 0) << agent.output();
    EXPECT_NEAR(brightness(), 1.0, 0.01);
    EXPECT_EQ(side().geometry, "800x600" + at);
}

// No tray on a bare X server: launching Lumora again shows the panel as a window named
// "Lumora", and `lumora panel` toggles it.
TEST_F(X11Agent, WithoutATrayTheNextLaunchAndThePanelCommandShowTheWindow) {
    const auto panelShown = [&] {
        const ToolResult found =
            runTool({"xdotool", "search", "--onlyvisible", "--name", "^Lumora$"}, display());
        return found.exitCode == 0 && !found.output.empty();
    };
    lumora::test::Process agent(home, {}, env());
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
    EXPECT_TRUE(contains(agent.output(), "no system tray")) << agent.output();
    EXPECT_FALSE(panelShown());

    const auto second = lumora::test::runToEnd(home, {}, env());
    EXPECT_EQ(second.status, 0) << second.output;
    EXPECT_TRUE(eventually(panelShown)) << agent.output();
    EXPECT_EQ(lumora::test::runToEnd(home, {"panel"}).status, 0);
    EXPECT_TRUE(eventually([&] { return !panelShown(); })) << agent.output();
    send("lumora://panel?on=1");
    EXPECT_TRUE(eventually(panelShown)) << agent.output();

    agent.signal(SIGTERM);
    EXPECT_EQ(agent.waitExit(), 0) << agent.output();
}

// The X server dies under the agent (a crash, the end of the session): the agent notices, says
// so, writes its last status and ends with status 3 for its service manager to restart it,
// whether Qt's own connection noticed first (the windowed agent) or the backend's (headless).
// Started again on the next server, it switches off again the monitor the user had off.
TEST_F(X11Agent, LosingTheServerEndsTheAgentWithStatus3AndTheNextStartResumes) {
    Home homes[2];  // a log and a status file of each round's own
    for (const bool headless : {false, true}) {
        SCOPED_TRACE(headless ? "headless" : "windowed");
        if (!server) {
            std::string whyNot;
            server = XorgServer::start(whyNot);
            ASSERT_TRUE(server) << whyNot;
        }
        Home& own = homes[headless ? 1 : 0];
        lumora::test::Process agent(
            own, headless ? std::vector<std::string>{"--headless"} : std::vector<std::string>{},
            env());
        ASSERT_TRUE(eventually([&] { return own.agentAnswers(); })) << agent.output();
        EXPECT_EQ(lumora::test::runToEnd(own, {"dim", "DUMMY0", "0.5"}).status, 0);
        if (!headless) {
            EXPECT_EQ(lumora::test::runToEnd(own, {"disconnect", "side"}).status, 0);
        }

        witness.reset();  // its connection would end this process with the server
        const auto killed = std::chrono::steady_clock::now();  // Xorg takes a moment to stop
        server->kill();
        EXPECT_EQ(agent.waitExit(std::chrono::seconds(2)), 3) << agent.output();
        const auto noticed = std::chrono::steady_clock::now() - killed;
        EXPECT_LT(noticed, std::chrono::seconds(2));
        RecordProperty(
            headless ? "headlessExitMs" : "windowedExitMs",
            std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(noticed).count()));
        EXPECT_TRUE(contains(readFile(own.logFile()), "display server lost\n"))
            << readFile(own.logFile());
        const auto status = lumora::test::readJson(own.statusFile());
        ASSERT_TRUE(status);
        EXPECT_EQ(status->value("running", true), false);
        server.reset();
    }

    std::string whyNot;
    server = XorgServer::start(whyNot);
    ASSERT_TRUE(server) << whyNot;
    witness = std::make_unique<Witness>(display());
    light("DUMMY1", "1024x768", {"--right-of", "DUMMY0"});
    witness->setEdid("DUMMY1", makeEdid({.serial = 7, .name = "Side Monitor"}));
    lumora::test::Process agent(homes[0], {"--headless"}, env());
    EXPECT_TRUE(eventually([&] { return side().geometry.empty(); })) << agent.output();
    EXPECT_TRUE(
        contains(readFile(homes[0].logFile()), "resuming after the display server was lost"));
    agent.signal(SIGTERM);
    EXPECT_EQ(agent.waitExit(), 0) << agent.output();
    EXPECT_FALSE(side().geometry.empty()) << "switched on again at quit, as always";
}

// The machine sleeps and wakes (logind's PrepareForSleep(false)), and the gamma tables were
// reset meanwhile: the user's dimming comes back.
TEST_F(X11Agent, AfterAWakeTheSoftwareDimmingComesBack) {
    if (!wltest::hasDbusmock()) GTEST_SKIP() << "python3-dbusmock is not installed";
    wltest::PrivateBus bus;
    ASSERT_EQ(bus.problem(), "");
    wltest::ChildProcess logind({"/usr/bin/python3", "-m", "dbusmock", "--template", "logind"},
                                {"DBUS_SYSTEM_BUS_ADDRESS=" + bus.address()},
                                bus.dir() / "logind.log");
    const std::string call = "gdbus call --address " + bus.address() +
                             " --dest org.freedesktop.login1 --object-path /org/freedesktop/login1"
                             " --method ";
    ASSERT_TRUE(eventually([&] {
        return wltest::runCommand(call + "org.freedesktop.DBus.Peer.Ping 2>/dev/null").exitCode ==
               0;
    })) << readFile(bus.dir() / "logind.log");

    auto environment = env();
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address();
    lumora::test::Process agent(home, {"--headless"}, environment);
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
    send("lumora://dim?display=DUMMY0&value=50");
    run({"xrandr", "--output", "DUMMY0", "--gamma", "1:1:1"});
    ASSERT_NEAR(brightness(), 1.0, 0.01);

    wltest::runCommand(call +
                       "org.freedesktop.DBus.Mock.EmitSignal org.freedesktop.login1.Manager "
                       "PrepareForSleep b '[<false>]'");
    EXPECT_TRUE(eventually([&] { return std::abs(brightness() - 0.5) < 0.01; }))
        << brightness() << "\n"
        << agent.output();
}

}  // namespace
}  // namespace lumora::lx::test
