// The agent in a GNOME Wayland session (a real headless Mutter on a private bus): it finds
// Mutter's display configuration, its commands change what Mutter itself reports, and it ends
// with status 3 when the compositor dies.
#include <gtest/gtest.h>

#include <chrono>

#include "app/AgentHarness.h"
#include "backends/linux/wayland/mutter/MutterSession.h"

namespace lumora::wltest {
namespace {

using lumora::test::contains;
using lumora::test::eventually;
using lumora::test::Home;

TEST(GnomeAgent, ListsMutterFollowsTheCommandsAndEndsWithTheCompositor) {
    MutterSession mutter;
    if (!mutter.problem().empty()) GTEST_SKIP() << mutter.problem();
    Home home;
    const std::map<std::string, std::string> env{
        {"WAYLAND_DISPLAY", (mutter.runtimeDir() / "wayland-0").string()},
        {"DBUS_SESSION_BUS_ADDRESS", mutter.address()},
        {"XDG_CURRENT_DESKTOP", "GNOME"}};
    const auto list = lumora::test::runToEnd(home, {"--list"}, env);
    EXPECT_TRUE(contains(list.output, "GNOME (Mutter DisplayConfig)")) << list.output;

    lumora::test::Process agent(home, {"--headless"}, env);
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
    auto send = [&](const std::string& url) {
        const auto run = lumora::test::runToEnd(home, {url});
        EXPECT_EQ(run.status, 0) << url << "\n" << run.output;
    };
    send("lumora://status");
    const auto status = lumora::test::readJson(home.statusFile());
    ASSERT_TRUE(status && (*status)["displays"].size() == 2u) << agent.output();
    std::string other;
    for (const auto& d : (*status)["displays"]) {
        if (!d["main"].get<bool>()) other = std::to_string(d["id"].get<std::uint32_t>());
    }
    ASSERT_FALSE(other.empty());

    auto primary = [&] {
        for (const auto& lm : mutter.logicalMonitors()) {
            if (lm.primary) return lm.connectors;
        }
        return std::vector<std::string>{};
    };
    const auto before = primary();
    send("lumora://main?display=" + other);
    EXPECT_NE(primary(), before) << "the primary moved";
    EXPECT_FALSE(primary().empty());

    // The compositor dies: Mutter's D-Bus service would never tell, the Wayland socket does.
    mutter.kill();
    EXPECT_EQ(agent.waitExit(std::chrono::seconds(2)), 3) << agent.output();
    EXPECT_TRUE(contains(lumora::test::readFile(home.logFile()), "display server lost\n"));
    EXPECT_EQ(lumora::test::readJson(home.statusFile())->value("running", true), false);
}

// Wayland grabs no keys: the shortcuts go through the desktop portal (a stand-in on Mutter's
// bus), and a press there steps the main display, the pointer's place being unknown.
TEST(GnomeAgent, TheDesktopPortalsShortcutStepsTheMainDisplay) {
    MutterSession mutter;
    if (!mutter.problem().empty()) GTEST_SKIP() << mutter.problem();
    if (!hasDbusmock()) GTEST_SKIP() << "python3-dbusmock is not installed";
    ChildProcess portal({"/usr/bin/python3", "-m", "dbusmock", "--template",
                         LUMORA_PORTAL_FIXTURES "/global_shortcuts.py"},
                        {"DBUS_SESSION_BUS_ADDRESS=" + mutter.address()},
                        mutter.runtimeDir() / "portal.out");
    const auto portalCall = [&](const std::string& method, const std::string& args = "") {
        return commandOutput("DBUS_SESSION_BUS_ADDRESS='" + mutter.address() +
                             "' gdbus call --session --dest org.freedesktop.portal.Desktop "
                             "--object-path /org/freedesktop/portal/desktop --method " +
                             method + " " + args + " 2>&1");
    };
    ASSERT_TRUE(waitFor(
        [&] { return contains(portalCall("org.freedesktop.DBus.Mock.GetTestLog"), "[]"); }, 10));
    Home home;
    const std::map<std::string, std::string> env{
        {"WAYLAND_DISPLAY", (mutter.runtimeDir() / "wayland-0").string()},
        {"DBUS_SESSION_BUS_ADDRESS", mutter.address()},
        {"XDG_CURRENT_DESKTOP", "GNOME"}};
    lumora::test::Process agent(home, {"--headless"}, env);
    ASSERT_TRUE(eventually([&] { return home.agentAnswers(); })) << agent.output();
    ASSERT_TRUE(eventually([&] {
        return contains(portalCall("org.freedesktop.DBus.Mock.GetTestLog"), "sleepDisplays");
    })) << agent.output();
    EXPECT_TRUE(contains(portalCall("org.freedesktop.DBus.Mock.GetTestLog"),
                         "brightnessDown [CTRL+ALT+LOGO+Down]"));

    const auto mainBrightness = [&] {
        EXPECT_EQ(lumora::test::runToEnd(home, {"lumora://status"}).status, 0);
        const auto status = lumora::test::readJson(home.statusFile());
        if (!status) return -1.0;
        for (const auto& d : (*status)["displays"]) {
            if (d["main"].get<bool>()) return d["brightness"].get<double>();
        }
        return -1.0;
    };
    const double before = mainBrightness();
    portalCall("org.freedesktop.DBus.Mock.Activate", "brightnessDown");
    EXPECT_TRUE(eventually([&] { return mainBrightness() == before - 1.0 / 16; }))
        << before << "\n"
        << agent.output();
    agent.signal(SIGTERM);
    EXPECT_EQ(agent.waitExit(), 0) << agent.output();
}

}  // namespace
}  // namespace lumora::wltest
