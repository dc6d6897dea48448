#include <gtest/gtest.h>

#include <csignal>

#include "AgentHarness.h"
#include "runtime/SettingsDefaults.h"

namespace lumora::test {
namespace {

const char* const kAsked = "loginItemAsked";

// Starts the agent in `home` and stops it cleanly.
void launchOnce(const Home& home) {
    Agent agent(home);
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    agent.process().signal(SIGTERM);
    ASSERT_EQ(agent.process().waitExit(), 0) << agent.process().output();
}

std::optional<nlohmann::json> stored(const Home& home, const char* key) {
    return app::SettingsDefaults(home.settingsFile()).object(key);
}

TEST(LoginItemBlackBox, FirstLaunchRegistersOnceAndLaterLaunchesLeaveItAlone) {
    Home home;
    launchOnce(home);
    ASSERT_TRUE(std::filesystem::exists(home.autostartFile()));
    const std::string entry = readFile(home.autostartFile());
    EXPECT_TRUE(contains(entry, "Exec=")) << entry;
    EXPECT_TRUE(contains(entry, "--headless")) << entry;
    EXPECT_EQ(stored(home, kAsked), nlohmann::json(true));

    // The user removed it; it stays removed.
    std::filesystem::remove(home.autostartFile());
    launchOnce(home);
    EXPECT_FALSE(std::filesystem::exists(home.autostartFile()));
    EXPECT_EQ(stored(home, kAsked), nlohmann::json(true));
}

TEST(LoginItemBlackBox, AutostartFileInstalledByHandSuppressesTheRegistration) {
    Home home;
    std::filesystem::create_directories(home.autostartFile().parent_path());
    const std::string byHand = "[Desktop Entry]\nType=Application\nExec=/opt/lumora/lumora\n";
    writeFile(home.autostartFile(), byHand);
    launchOnce(home);
    EXPECT_EQ(readFile(home.autostartFile()), byHand);
    EXPECT_EQ(stored(home, kAsked), std::nullopt);
}

}  // namespace
}  // namespace lumora::test
