#include <gtest/gtest.h>

#include <sys/wait.h>
#include <array>
#include <cstdio>
#include <string>

#include "support/TestSupport.h"

namespace {

struct Run {
    int status = -1;
    std::string output;
};

// Runs the built program through the shell, standard error folded into the output.
Run runLumora(const std::string& arguments) {
    Run run;
    std::string command = std::string(LUMORA_BINARY) + " " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.output.append(buffer.data(), n);
    int raw = pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return run;
}

TEST(ListBlackBox, BuiltInWorldShowsPanelDdcMonitorAndPlainMonitor) {
    auto run = runLumora("--simulate --list");
    ASSERT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("3 display(s)"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("display 1 \"Built-in Retina Display\" (built-in, main, online)"),
              std::string::npos)
        << run.output;
    // Read over the simulated DDC/CI wire, not copied from the world.
    EXPECT_NE(run.output.find("DDC/CI: brightness 50/100 contrast 75/100 volume 30/100"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("DDC/CI: no channel"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("* 1512×982 HiDPI · 120 Hz"), std::string::npos) << run.output;
}

TEST(ListBlackBox, BrokenWorldFileGivesOneErrorLineAndStatusTwo) {
    lumora::test::TempDir dir;
    lumora::test::writeFile(dir / "world.json", "{ \"displays\": [ { \"id\": \"one\" } ] }");
    auto run = runLumora("--simulate=" + (dir / "world.json").string() + " --list");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1) << run.output;
    EXPECT_NE(run.output.find("world.json"), std::string::npos) << run.output;

    lumora::test::writeFile(dir / "garbage.json", "\x01\x02{{{");
    run = runLumora("--simulate=" + (dir / "garbage.json").string() + " --list");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.output.find("garbage.json"), std::string::npos) << run.output;

    run = runLumora("--simulate=" + (dir / "missing.json").string() + " --list");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.output.find("missing.json"), std::string::npos) << run.output;
}

TEST(ListBlackBox, UnknownArgumentIsRefusedWithUsage) {
    auto run = runLumora("--bogus");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.output.find("usage: lumora"), std::string::npos);
}

}  // namespace
