#include "FrontEnd.h"

#include <gtest/gtest.h>

#include <map>

namespace lumora::app {
namespace {

AppPaths::Environment environment(std::map<std::string, std::string> variables) {
    return
        [variables = std::move(variables)](const std::string& name) -> std::optional<std::string> {
            auto found = variables.find(name);
            if (found == variables.end()) return std::nullopt;
            return found->second;
        };
}

FrontEnd choose(std::vector<std::string> arguments, std::map<std::string, std::string> variables) {
    auto cli = parseCommandLine(arguments);
    EXPECT_TRUE(cli.error.empty()) << cli.error;
    return chooseFrontEnd(cli, environment(std::move(variables)));
}

#if !defined(__APPLE__)
TEST(FrontEnd, AgentOnADesktopTriesItsDisplayServerThenFallsBackOffscreen) {
    auto x11 = choose({"--simulate"}, {{"DISPLAY", ":0"}});
    EXPECT_TRUE(x11.widgets);
    EXPECT_EQ(x11.platform, "xcb;offscreen");
    EXPECT_EQ(x11.notice, "");

    auto wayland = choose({"--simulate"}, {{"DISPLAY", ":0"}, {"WAYLAND_DISPLAY", "wayland-0"}});
    EXPECT_EQ(wayland.platform, "wayland;xcb;offscreen");

    // Chosen by hand: taken as it is, even without a display server.
    auto byHand = choose({"--simulate"}, {{"QT_QPA_PLATFORM", "offscreen"}});
    EXPECT_TRUE(byHand.widgets);
    EXPECT_EQ(byHand.platform, std::nullopt);
}

TEST(FrontEnd, NoDisplayServerMakesTheAgentHeadlessButStillDrawsThePanel) {
    auto agent = choose({"--simulate"}, {{"DISPLAY", ""}});
    EXPECT_FALSE(agent.widgets);
    EXPECT_EQ(agent.platform, std::nullopt);
    EXPECT_EQ(agent.notice,
              "no display server (DISPLAY and WAYLAND_DISPLAY are unset); running headless");

    auto preview = choose({"--simulate", "--preview"}, {});
    EXPECT_TRUE(preview.widgets);
    EXPECT_EQ(preview.platform, "offscreen");
    EXPECT_EQ(preview.notice,
              "no display server (DISPLAY and WAYLAND_DISPLAY are unset); the preview window is "
              "drawn offscreen");

    auto render = choose({"--simulate", "--render-panel=/tmp/p.png"}, {});
    EXPECT_TRUE(render.widgets);
    EXPECT_EQ(render.platform, "offscreen");
    EXPECT_EQ(render.notice, "");
}
#endif

TEST(FrontEnd, HeadlessAsksForNothingGraphical) {
    auto headless = choose({"--simulate", "--headless"}, {{"DISPLAY", ":0"}});
    EXPECT_FALSE(headless.widgets);
    EXPECT_EQ(headless.platform, std::nullopt);
    EXPECT_EQ(headless.notice, "");
}

TEST(FrontEnd, OnlyAFallbackThatLandedOffscreenCountsAsUnreachable) {
    FrontEnd listed;
    listed.widgets = true;
    listed.platform = "xcb;offscreen";
    EXPECT_TRUE(fellBackOffscreen(listed, "offscreen"));
    EXPECT_FALSE(fellBackOffscreen(listed, "xcb"));

    FrontEnd offscreenAsked = listed;
    offscreenAsked.platform = "offscreen";
    EXPECT_FALSE(fellBackOffscreen(offscreenAsked, "offscreen"));

    FrontEnd byHand = listed;
    byHand.platform.reset();
    EXPECT_FALSE(fellBackOffscreen(byHand, "offscreen"));
}

}  // namespace
}  // namespace lumora::app
