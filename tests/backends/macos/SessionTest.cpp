// The power tool runs, on a stand-in for the power tool.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "decode/PowerTool.h"

namespace lumora::mac {
namespace {

namespace fs = std::filesystem;

// A power tool that notes each run (its argument, and whether its output goes nowhere) and
// then waits until the test releases it (or its folder is gone).
class FakePowerTool : public ::testing::Test {
  protected:
    FakePowerTool() {
        std::string pattern = (fs::temp_directory_path() / "lumora-pmset-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        tool_ = folder_ / "pmset";
        std::ofstream(tool_)
            << "#!/bin/sh\n"
               "dir=$(dirname \"$0\")\n"
               "out=loud\n"
               "[ /dev/fd/1 -ef /dev/null ] && [ /dev/fd/2 -ef /dev/null ] && "
               "out=quiet\n"
               "echo \"$1 $out\" >> \"$dir/runs\"\n"
               "echo chatter; echo chatter >&2\n"
               "while [ -d \"$dir\" ] && [ ! -e \"$dir/release\" ]; do sleep 0.02; done\n";
        fs::permissions(tool_, fs::perms::owner_all);
    }
    ~FakePowerTool() override {
        release();
        std::error_code ec;
        fs::remove_all(folder_, ec);
    }

    void release() { std::ofstream(folder_ / "release").flush(); }
    std::string runs() const {
        std::ifstream in(folder_ / "runs");
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    // Runs have appended their line within five seconds.
    bool waitForRuns(const std::string& expected) const {
        for (int i = 0; i < 250 && runs() != expected; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return runs() == expected;
    }

    fs::path folder_;
    fs::path tool_;
};

TEST_F(FakePowerTool, DisplaySleepRunsOnceUntilThePreviousRunEnds) {
    PowerTool power(tool_.string());
    EXPECT_TRUE(power.installed());
    EXPECT_EQ(power.sleepDisplays().started, true);
    ASSERT_TRUE(waitForRuns("displaysleepnow quiet\n"));
    for (int i = 0; i < 3; ++i) {
        const auto again = power.sleepDisplays();
        EXPECT_TRUE(again.started && again.error.empty());
    }
    EXPECT_EQ(runs(), "displaysleepnow quiet\n");

    release();
    // Once the first run has ended, the next request starts a new one.
    // A run writes its line before it ends, so no third run can start before the check.
    const std::string twoRuns = "displaysleepnow quiet\ndisplaysleepnow quiet\n";
    for (int i = 0; i < 250 && runs() != twoRuns; ++i) {
        EXPECT_TRUE(power.sleepDisplays().started);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(runs(), twoRuns);
    // System sleep is never held back by a display-sleep run.
    const auto system = power.sleepSystem();
    EXPECT_TRUE(system.started && system.error.empty());
    EXPECT_TRUE(waitForRuns("displaysleepnow quiet\ndisplaysleepnow quiet\nsleepnow quiet\n"));
}

TEST(PowerTool, MissingToolIsReportedInOneLine) {
    PowerTool power("/nonexistent/pmset");
    EXPECT_FALSE(power.installed());
    const auto displays = power.sleepDisplays();
    EXPECT_FALSE(displays.started);
    EXPECT_EQ(displays.error, "/nonexistent/pmset failed: No such file or directory");
    const auto system = power.sleepSystem();
    EXPECT_FALSE(system.started);
    EXPECT_EQ(system.error, displays.error);
    // A failed display-sleep run holds nothing back.
    EXPECT_FALSE(power.sleepDisplays().started);
}

}  // namespace
}  // namespace lumora::mac
