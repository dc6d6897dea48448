// The agent's life from outside: the first launch's login item, a wake, the clean-up on a
// termination signal, and the next start in the same home by a command.
#include <gtest/gtest.h>

#include <csignal>

#include "AgentHarness.h"
#include "runtime/SettingsDefaults.h"

namespace lumora::test {
namespace {

std::optional<nlohmann::json> loginItemAsked(const Home& home) {
    return app::SettingsDefaults(home.settingsFile()).object("loginItemAsked");
}

// The wake is driven through the world file, as a user of the simulator would: the monitor
// forgets and ignores DDC/CI for 3 s, and the wake resets every gamma table.
TEST(ShutdownBlackBox, AWakeRestoresBrightnessAndDimASignalUndoesAllACommandStartsTheNextAgent) {
    Home home;
    nlohmann::json world = nlohmann::json::parse(readFile(fixture("laptopAndExternal.json")));
    world["gammaResetOnWake"] = true;
    world["displays"][1]["ddc"]["forgetsOnWake"] = true;
    world["displays"][1]["ddc"]["wakeDeafSeconds"] = 3;
    const std::filesystem::path worldFile = home / "world.json";
    writeFile(worldFile, world.dump());
    {
        Agent agent(home, {"--simulate=" + worldFile.string()});
        ASSERT_TRUE(agent.ready()) << agent.process().output();
        ASSERT_TRUE(agent.ddcScanned()) << readFile(home.logFile());
        ASSERT_TRUE(agent.send("lumora://brightness?display=2&value=70"));
        ASSERT_TRUE(agent.send("lumora://dim?display=2&value=0.4"));
        ASSERT_TRUE(agent.send("lumora://disconnect?display=projector"));
        ASSERT_TRUE(agent.send("lumora://virtual?width=1920&height=1080&name=Demo"));
        const auto shows = [&] {  // display 2 at 70 over DDC/CI and dimmed in software
            auto state = agent.state();
            return state && displayWithId(*state, 2)["vcp"].value("0x10", -1) == 70 &&
                   displayWithId(*state, 2)["gamma"]["red"] == nlohmann::json({0.0, 0.201, 0.4});
        };
        ASSERT_TRUE(eventually(shows)) << readFile(agent.stateFile());
        auto before = agent.state();
        ASSERT_TRUE(before) << readFile(agent.stateFile());
        EXPECT_EQ(displayWithId(*before, 3)["enabled"], false);
        EXPECT_EQ((*before)["virtualDisplays"].size(), 1u);

        world["wakes"] = 1;
        writeFile(worldFile, world.dump());
        EXPECT_TRUE(eventually([&] {
            return contains(readFile(home.logFile()),
                            "display 2: restored brightness 70 after wake");
        })) << readFile(home.logFile());
        EXPECT_TRUE(shows()) << readFile(agent.stateFile());
        auto status = readJson(home.statusFile());
        ASSERT_TRUE(status);
        EXPECT_EQ((*status)["restoreAfterWake"], true);

        // Dimmed, then switched off: at quit it comes back with its own colours too.
        ASSERT_TRUE(agent.send("lumora://connect?display=projector"));
        ASSERT_TRUE(agent.send("lumora://dim?display=projector&value=0.5"));
        ASSERT_TRUE(agent.send("lumora://disconnect?display=projector"));
        agent.process().signal(SIGTERM);
        EXPECT_EQ(agent.process().waitExit(), 0) << agent.process().output();
        auto after = agent.state();
        ASSERT_TRUE(after) << readFile(agent.stateFile());
        EXPECT_EQ((*after)["virtualDisplays"], nlohmann::json::array());
        ASSERT_EQ((*after)["displays"].size(), 3u) << after->dump(2);
        for (const auto& display : (*after)["displays"]) {
            EXPECT_EQ(display["gamma"], "identity") << display.dump();
            EXPECT_EQ(display["enabled"], true) << display.dump();
        }
    }
    // In the order of the clean-up: the projector comes back after "Lumora quit".
    const std::string log = readFile(home.logFile());
    const auto quit = log.find(" Lumora quit\n");
    ASSERT_NE(quit, std::string::npos) << log;
    EXPECT_NE(log.find("display 3: connected (0)", quit), std::string::npos) << log;
    EXPECT_FALSE(std::filesystem::exists(home.socket()));

    // The first launch registered the login item, once (on macOS with the system's service,
    // which leaves no file in the home).
    EXPECT_EQ(loginItemAsked(home), nlohmann::json(true));
#if !defined(__APPLE__)
    const std::string entry = readFile(home.autostartFile());
    EXPECT_TRUE(contains(entry, "Exec=") && contains(entry, "--headless")) << entry;
    std::filesystem::remove(home.autostartFile());
#endif

    // A command with no agent running starts one: it cannot hand back an exit status, so it
    // says why the command did nothing, carries it out only once it runs, and serves what
    // follows.
    Agent second(home, {"--print-status", "dim", "nosuch"});
    ASSERT_TRUE(second.ready()) << second.process().output();
    EXPECT_TRUE(eventually([&] {
        const std::string out = second.process().output();
        return contains(out, "lumora: display not found: nosuch\n") &&
               contains(out, "\"displays\": [");
    })) << second.process().output();
    EXPECT_FALSE(contains(second.process().output(), "another Lumora is running"));
    // The log is written on its own queue: wait for the command's line to land.
    std::string secondLog;
    EXPECT_TRUE(eventually([&] {
        secondLog = readFile(home.logFile()).substr(quit);
        return contains(secondLog, "url: dim [\"display\": \"nosuch\"]\n");
    })) << secondLog;
    const auto started = secondLog.find("lid: start");
    EXPECT_NE(started, std::string::npos) << secondLog;
    EXPECT_LT(started, secondLog.find("url: dim [\"display\": \"nosuch\"]\n")) << secondLog;
    ASSERT_TRUE(second.send("lumora://brightness?display=office&value=30"));
    auto status = readJson(home.statusFile());
    ASSERT_TRUE(status);
    EXPECT_DOUBLE_EQ(displayWithId(*status, 2).value("brightness", -1.0), 0.3);
    second.process().signal(SIGINT);
    EXPECT_EQ(second.process().waitExit(), 0) << second.process().output();
    EXPECT_FALSE(std::filesystem::exists(home.autostartFile())) << "the user removed it";
}

// Whatever becomes of the display server, the agent runs, says why it has less, serves
// commands and ends cleanly on a signal; a start-at-login entry made by hand is left alone.
TEST(ShutdownBlackBox, WithoutAUsableDisplayServerOrTrayItStillRunsAndSaysWhy) {
#if defined(__APPLE__)
    GTEST_SKIP() << "the window server of a Mac is always there";
#endif
    const std::string byHand = "[Desktop Entry]\nType=Application\nExec=/opt/lumora/lumora\n";
    const struct {
        std::map<std::string, std::string> environment;
        const char* notice;
        int signal;
    } cases[] = {
        {{},
         "no display server (DISPLAY and WAYLAND_DISPLAY are unset); running headless\n",
         SIGHUP},
        // A display number nobody serves.
        {{{"DISPLAY", ":97"}}, "the display server cannot be reached; running headless\n", SIGTERM},
        // Qt's offscreen platform draws windows but has no system tray.
        {{{"QT_QPA_PLATFORM", "offscreen"}},
         "no system tray; running without an icon (URL commands still work): the panel opens as "
         "a window when Lumora is launched again or by `lumora panel`, and the icon appears "
         "when a tray does\n",
         SIGTERM},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.notice);
        Home home;
        std::filesystem::create_directories(home.autostartFile().parent_path());
        writeFile(home.autostartFile(), byHand);
        Process agent(home, {"--simulate"}, c.environment);
        ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
        EXPECT_TRUE(contains(agent.output(), c.notice)) << agent.output();
        EXPECT_EQ(runToEnd(home, {"lumora://brightness?display=2&value=40"}).status, 0);
        agent.signal(c.signal);
        EXPECT_EQ(agent.waitExit(), 0) << agent.output();
        EXPECT_EQ(readFile(home.autostartFile()), byHand);
        EXPECT_EQ(loginItemAsked(home), std::nullopt);
    }
}

}  // namespace
}  // namespace lumora::test
