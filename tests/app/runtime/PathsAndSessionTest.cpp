#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <map>

#include "RuntimeTestSupport.h"
#include "runtime/AppPaths.h"
#include "runtime/AutostartEntry.h"
#include "runtime/QtSession.h"
#include "support/TestSupport.h"

namespace lumora::app {
namespace {

namespace fs = std::filesystem;

AppPaths::Environment environment(std::map<std::string, std::string> variables) {
    return
        [variables = std::move(variables)](const std::string& name) -> std::optional<std::string> {
            auto it = variables.find(name);
            if (it == variables.end()) return std::nullopt;
            return it->second;
        };
}

#if defined(__APPLE__)
TEST(AppPaths, MacFilesLiveInTheLibraryAndATestHomeKeepsItsOwnSettings) {
    auto paths = AppPaths::fromEnvironment(
        environment({{"HOME", "/Users/ann-test"}, {"TMPDIR", "/var/folders/x/T"}}), 501);
    EXPECT_EQ(paths.logFile, fs::path("/Users/ann-test/Library/Logs/Lumora.log"));
    EXPECT_EQ(paths.statusFile,
              fs::path("/Users/ann-test/Library/Application Support/Lumora/status.json"));
    EXPECT_EQ(paths.autostartFile,
              fs::path("/Users/ann-test/Library/LaunchAgents/org.lumora.Lumora.plist"));
    EXPECT_EQ(paths.instanceSocket, "/var/folders/x/T/lumora-501");
    // Not the account's home: settings in a file there, not in the account's defaults.
    EXPECT_EQ(paths.settingsFile,
              fs::path("/Users/ann-test/Library/Application Support/Lumora/Lumora.conf"));
    // The account's own home: the system's defaults.
    const passwd* me = getpwuid(getuid());
    ASSERT_NE(me, nullptr);
    paths = AppPaths::fromEnvironment(environment({{"HOME", me->pw_dir}}),
                                      static_cast<unsigned>(getuid()));
    EXPECT_EQ(paths.settingsFile, fs::path());
    EXPECT_EQ(paths.instanceSocket, "/tmp/lumora-" + std::to_string(getuid()));
}
#else
TEST(AppPaths, XdgVariablesWinOverHomeButRelativeOrEmptyOnesAreIgnored) {
    auto paths = AppPaths::fromEnvironment(environment({{"HOME", "/home/ann"}}), 1234);
    EXPECT_EQ(paths.logFile, fs::path("/home/ann/.local/state/lumora/Lumora.log"));
    EXPECT_EQ(paths.statusFile, fs::path("/home/ann/.local/state/lumora/status.json"));
    EXPECT_EQ(paths.settingsFile, fs::path("/home/ann/.config/Lumora/Lumora.conf"));
    EXPECT_EQ(paths.autostartFile, fs::path("/home/ann/.config/autostart/lumora.desktop"));
    EXPECT_EQ(paths.instanceSocket, "/tmp/lumora-1234");

    // Absolute XDG variables win (the black-box tests run the agent in such a home); relative
    // or empty ones are ignored.
    paths = AppPaths::fromEnvironment(environment({{"HOME", "/home/ann"},
                                                   {"XDG_STATE_HOME", "state"},
                                                   {"XDG_CONFIG_HOME", ""},
                                                   {"XDG_RUNTIME_DIR", "run"}}),
                                      7);
    EXPECT_EQ(paths.logFile, fs::path("/home/ann/.local/state/lumora/Lumora.log"));
    EXPECT_EQ(paths.settingsFile, fs::path("/home/ann/.config/Lumora/Lumora.conf"));
    EXPECT_EQ(paths.instanceSocket, "/tmp/lumora-7");

    // Without HOME the account database names it.
    const passwd* me = getpwuid(getuid());
    ASSERT_NE(me, nullptr);
    paths = AppPaths::fromEnvironment(environment({}), static_cast<unsigned>(getuid()));
    EXPECT_EQ(paths.home, fs::path(me->pw_dir));
}

#endif

// The autostart entry is the Linux login item; macOS uses the system's service.
#if !defined(__APPLE__)
class SessionTest : public test::QtAppTest {
  protected:
    test::TempDir dir;
    AppPaths paths =
        AppPaths::fromEnvironment(environment({{"HOME", dir.path().string()},
                                               {"XDG_CONFIG_HOME", (dir / "config").string()}}),
                                  1);
};

TEST_F(SessionTest, LoginItemSwitchWritesAndRemovesTheAutostartEntry) {
    QtSession session(paths, {"/opt/Lumora Apps/lumora", true});
    EXPECT_FALSE(session.launchAgentInstalled());
    EXPECT_FALSE(session.loginItemEnabled());

    ASSERT_TRUE(session.registerLoginItem());
    EXPECT_TRUE(session.loginItemEnabled());
    EXPECT_EQ(test::readFile(dir / "config/autostart/lumora.desktop"),
              "[Desktop Entry]\n"
              "Type=Application\n"
              "Name=Lumora\n"
              "Comment=Display control agent\n"
              "Exec=\"/opt/Lumora Apps/lumora\" --headless\n"
              "Terminal=false\n"
              "NoDisplay=true\n"
              "X-GNOME-Autostart-enabled=true\n");
    // Installed means "there at start": this run's own registration does not count.
    EXPECT_FALSE(session.launchAgentInstalled());
    EXPECT_TRUE(QtSession(paths, {}).launchAgentInstalled());

    ASSERT_TRUE(session.setLoginItemEnabled(false));
    EXPECT_FALSE(session.loginItemEnabled());
    EXPECT_FALSE(fs::exists(dir / "config/autostart/lumora.desktop"));
    EXPECT_TRUE(session.setLoginItemEnabled(false)) << "already off";
    // The entry names this very program.
    EXPECT_TRUE(QtSession::runningBinary().is_absolute());
    EXPECT_TRUE(fs::exists(QtSession::runningBinary()));
}

// Under a systemd user manager with the packaged unit installed, the switch enables the unit
// for the graphical session (the link `systemctl --user enable` makes) and no autostart entry
// starts a second agent.
TEST_F(SessionTest, UnderASystemdUserManagerTheSwitchEnablesThePackagedUnit) {
    const auto withRuntime = [&](const fs::path& runtime) {
        return AppPaths::fromEnvironment(
            environment({{"HOME", dir.path().string()},
                         {"XDG_CONFIG_HOME", (dir / "config").string()},
                         {"XDG_DATA_HOME", (dir / "data").string()},
                         {"XDG_RUNTIME_DIR", runtime.string()}}),
            1);
    };
    fs::create_directories(dir / "run/systemd");
    fs::create_directories(dir / "data/systemd/user");
    test::writeFile(dir / "data/systemd/user/lumora.service", "[Service]\n");
    fs::create_directories(dir / "config/autostart");
    test::writeFile(dir / "config/autostart/lumora.desktop", "[Desktop Entry]\n");
    const fs::path link = dir / "config/systemd/user/graphical-session.target.wants/lumora.service";

    QtSession session(withRuntime(dir / "run"), {"/usr/bin/lumora", false});
    EXPECT_EQ(session.userUnit(), dir / "data/systemd/user/lumora.service");
    EXPECT_FALSE(session.loginItemEnabled()) << "the unit is not enabled yet";
    ASSERT_TRUE(session.setLoginItemEnabled(true));
    EXPECT_EQ(fs::read_symlink(link), dir / "data/systemd/user/lumora.service");
    EXPECT_FALSE(fs::exists(dir / "config/autostart/lumora.desktop"));
    EXPECT_TRUE(session.loginItemEnabled());
    EXPECT_TRUE(QtSession(withRuntime(dir / "run"), {}).launchAgentInstalled());
    ASSERT_TRUE(session.setLoginItemEnabled(false));
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(link)));
    EXPECT_FALSE(session.loginItemEnabled());

    // No user manager running (its runtime folder is missing): the autostart entry again.
    QtSession plain(withRuntime(dir / "elsewhere"), {"/usr/bin/lumora", false});
    EXPECT_EQ(plain.userUnit(), std::nullopt);
    ASSERT_TRUE(plain.setLoginItemEnabled(true));
    EXPECT_TRUE(fs::exists(dir / "config/autostart/lumora.desktop"));
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(link)));
}

TEST_F(SessionTest, AnEntryTheUserHidIsOffAndAnUnwritableFolderFails) {
    fs::create_directories(dir / "config/autostart");
    test::writeFile(dir / "config/autostart/lumora.desktop", "[Desktop Entry]\nHidden=true\n");
    QtSession session(paths, {"/usr/bin/lumora", false});
    EXPECT_TRUE(session.launchAgentInstalled());
    EXPECT_FALSE(session.loginItemEnabled());

    // "autostart" is a file here, so no entry can be written under it.
    test::TempDir other;
    test::writeFile(other / "autostart", "not a folder");
    QtSession blocked(
        AppPaths::fromEnvironment(environment({{"HOME", other.path().string()},
                                               {"XDG_CONFIG_HOME", other.path().string()}}),
                                  1),
        {"/usr/bin/lumora", false});
    EXPECT_FALSE(blocked.setLoginItemEnabled(true));
    EXPECT_FALSE(blocked.loginItemEnabled());
}

#endif

TEST(AutostartEntry, ExecArgumentsAreQuotedAndEscapedAsDesktopEntriesRequire) {
    EXPECT_EQ(quoteExecArgument("/usr/bin/lumora"), "/usr/bin/lumora");
    EXPECT_EQ(quoteExecArgument("/opt/my apps/lumora"), "\"/opt/my apps/lumora\"");
    // Inside quotes: \" \` \$ \\ ; then every backslash doubled for the string value.
    EXPECT_EQ(quoteExecArgument("/a\"b"), "\"/a\\\\\"b\"");
    EXPECT_EQ(quoteExecArgument("/a\\b"), "\"/a\\\\\\\\b\"");
    EXPECT_EQ(quoteExecArgument("/100%/lumora"), "/100%%/lumora");
    EXPECT_EQ(quoteExecArgument(""), "\"\"");
    EXPECT_EQ(autostartEntry("/usr/bin/lumora", false).find("--headless"), std::string::npos);
}

}  // namespace
}  // namespace lumora::app
