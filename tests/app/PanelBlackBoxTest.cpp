#include <gtest/gtest.h>

#include <regex>

#include "AgentHarness.h"

namespace lumora::test {
namespace {

TEST(PanelBlackBox, PreviewShowsAWindowForFifteenSecondsWithoutStartingTheAgent) {
    Home home;
    const auto begin = std::chrono::steady_clock::now();
    Process preview(home, {"--simulate", "--preview"}, {{"QT_QPA_PLATFORM", "offscreen"}});
    ASSERT_TRUE(eventually([&] { return contains(preview.output(), "WINDOW "); }))
        << preview.output();
    EXPECT_TRUE(std::regex_search(preview.output(), std::regex("(^|\n)WINDOW [0-9]+\n")))
        << preview.output();
    // A preview is no agent: it takes no socket and refuses nobody.
    EXPECT_FALSE(home.agentAnswers());

    ASSERT_EQ(preview.waitExit(kWaitLimit + 15s), 0) << preview.output();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 15s);
    const std::string log = readFile(home.logFile());
    EXPECT_FALSE(contains(log, "lid: start")) << log;
    EXPECT_FALSE(contains(log, "Lumora quit")) << log;
    EXPECT_FALSE(std::filesystem::exists(home.autostartFile()));
}

TEST(PanelBlackBox, RenderPanelWritesAPngWithoutADisplayServer) {
    Home home;
    const auto png = home / "panel.png";
    auto run = runToEnd(home, {"--simulate", "--render-panel=" + png.string()});
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_TRUE(contains(run.output, "PANEL " + png.string() + "\n")) << run.output;
    EXPECT_EQ(readFile(png).substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    EXPECT_FALSE(contains(readFile(home.logFile()), "lid: start"));

    auto unwritable = runToEnd(home, {"--simulate", "--render-panel=/nonexistent/dir/p.png"});
    EXPECT_EQ(unwritable.status, 1) << unwritable.output;
    EXPECT_TRUE(contains(unwritable.output, "cannot write the panel to /nonexistent/dir/p.png"))
        << unwritable.output;
}

}  // namespace
}  // namespace lumora::test
