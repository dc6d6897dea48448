#include "CommandLine.h"

#include <gtest/gtest.h>

namespace lumora::app {
namespace {

TEST(CommandLine, SimulateWithAndWithoutWorld) {
    auto plain = parseCommandLine({"--simulate", "--list"});
    EXPECT_TRUE(plain.error.empty());
    EXPECT_TRUE(plain.simulate);
    EXPECT_TRUE(plain.list);
    EXPECT_FALSE(plain.worldFile);

    auto withWorld = parseCommandLine(
        {"--simulate=/tmp/w.json", "--sim-state=/tmp/s.json", "--headless", "lumora://status"});
    EXPECT_TRUE(withWorld.error.empty());
    EXPECT_EQ(withWorld.worldFile, std::filesystem::path("/tmp/w.json"));
    EXPECT_EQ(withWorld.stateFile, std::filesystem::path("/tmp/s.json"));
    EXPECT_TRUE(withWorld.headless);
    EXPECT_EQ(withWorld.url, "lumora://status");
}

TEST(CommandLine, RefusesWhatItCannotUse) {
    EXPECT_EQ(parseCommandLine({"--frobnicate"}).error, "unknown argument: --frobnicate");
    EXPECT_EQ(parseCommandLine({"--simulate="}).error, "--simulate= needs a world file");
    EXPECT_EQ(parseCommandLine({"--simulatex"}).error, "unknown argument: --simulatex");
    EXPECT_EQ(parseCommandLine({"--sim-state=/tmp/s.json"}).error, "--sim-state needs --simulate");
    EXPECT_EQ(parseCommandLine({"lumora://a", "lumora://b"}).error, "only one URL at a time");
    EXPECT_EQ(parseCommandLine({"--render-panel="}).error, "--render-panel= needs a file");
    const std::string noPanel = "--headless shows no panel: drop --preview or --render-panel";
    EXPECT_EQ(parseCommandLine({"--headless", "--preview"}).error, noPanel);
    EXPECT_EQ(parseCommandLine({"--render-panel=/tmp/p.png", "--headless"}).error, noPanel);
}

TEST(CommandLine, RenderPanelTakesItsFileAndCombinesWithTheWorld) {
    auto cli = parseCommandLine({"--simulate=/tmp/w.json", "--render-panel=/tmp/panel.png"});
    EXPECT_TRUE(cli.error.empty()) << cli.error;
    EXPECT_EQ(cli.renderPanel, std::filesystem::path("/tmp/panel.png"));
    EXPECT_EQ(cli.worldFile, std::filesystem::path("/tmp/w.json"));
    EXPECT_FALSE(cli.preview);
    EXPECT_FALSE(parseCommandLine({"--preview"}).renderPanel);
}

}  // namespace
}  // namespace lumora::app
