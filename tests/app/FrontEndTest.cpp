#include "FrontEnd.h"

#include <gtest/gtest.h>

#include <map>

namespace lumora::app {
namespace {

using Variables = std::map<std::string, std::string>;
const std::string kNoServer = "no display server (DISPLAY and WAYLAND_DISPLAY are unset); ";

TEST(FrontEnd, ChosenFromTheArgumentsAndTheDisplayServerInTheEnvironment) {
    struct Case {
        std::vector<std::string> arguments;
        Variables variables;
        bool widgets;
        std::optional<std::string> platform;
        std::string notice;
    };
    const Case cases[] = {
        {{"--headless"}, {{"DISPLAY", ":0"}}, false, std::nullopt, ""},
#if !defined(__APPLE__)
        // An agent tries its display server, then falls back offscreen.
        {{}, {{"DISPLAY", ":0"}}, true, "xcb;offscreen", ""},
        {{},
         {{"DISPLAY", ":0"}, {"WAYLAND_DISPLAY", "wayland-0"}},
         true,
         "wayland;xcb;offscreen",
         ""},
        {{}, {{"QT_QPA_PLATFORM", "offscreen"}}, true, std::nullopt, ""},  // chosen by hand
        {{}, {{"DISPLAY", ""}}, false, std::nullopt, kNoServer + "running headless"},
        // The panel is drawn even without a display server.
        {{"--preview"}, {}, true, "offscreen", kNoServer + "the preview window is drawn offscreen"},
        {{"--render-panel=/tmp/p.png"}, {}, true, "offscreen", ""},
#endif
    };
    for (const Case& c : cases) {
        std::vector<std::string> arguments{"--simulate"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        auto cli = parseCommandLine(arguments);
        ASSERT_TRUE(cli.error.empty()) << cli.error;
        const FrontEnd chosen = chooseFrontEnd(cli, [&](const std::string& name) {
            auto found = c.variables.find(name);
            return found == c.variables.end() ? std::nullopt : std::optional(found->second);
        });
        SCOPED_TRACE(testing::PrintToString(arguments) + testing::PrintToString(c.variables));
        EXPECT_EQ(chosen.widgets, c.widgets);
        EXPECT_EQ(chosen.platform, c.platform);
        EXPECT_EQ(chosen.notice, c.notice);
    }
}

TEST(FrontEnd, OnlyAFallbackThatLandedOffscreenCountsAsUnreachable) {
    FrontEnd listed{true, "xcb;offscreen", ""};
    EXPECT_TRUE(fellBackOffscreen(listed, "offscreen"));
    EXPECT_FALSE(fellBackOffscreen(listed, "xcb"));
    EXPECT_FALSE(fellBackOffscreen({true, "offscreen", ""}, "offscreen"));
    EXPECT_FALSE(fellBackOffscreen({true, std::nullopt, ""}, "offscreen"));
}

}  // namespace
}  // namespace lumora::app
