#include "log/Log.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "support/TestSupport.h"

namespace lumora {
namespace {

using test::readFile;
using test::writeFile;
using Lines = std::vector<std::string>;

const std::string kStamp = test::kFixedStamp;

class LogTest : public ::testing::Test {
  protected:
    std::unique_ptr<Log> makeLog(std::ostream* echo = nullptr, const std::string& folder = "") {
        return std::make_unique<Log>(
            Log::Options{dir.path() / folder / "Lumora.log", test::fixedLocalTime, echo});
    }
    std::string file(const std::string& name = "Lumora.log") const { return readFile(dir / name); }
    test::TempDir dir;
};

TEST_F(LogTest, StampedLinesAreAppendedInOrderAndEchoed) {
    std::ostringstream echo;
    auto log = makeLog(&echo);
    log->write("one");
    log->write("two\nthree");
    log->write("");
    log->flush();
    const std::string expected = kStamp + " one\n" + kStamp + " two\nthree\n" + kStamp + " \n";
    EXPECT_EQ(file(), expected);
    EXPECT_EQ(echo.str(), expected);
    // The line feed inside a message splits it for tail.
    EXPECT_EQ(log->tail(10), (Lines{kStamp + " one", kStamp + " two", "three", kStamp + " "}));

    // A file removed between lines is started anew.
    std::filesystem::remove(dir / "Lumora.log");
    log->write("again");
    log->flush();
    EXPECT_EQ(file(), kStamp + " again\n");
}

TEST_F(LogTest, AFileOverTheLimitIsRotatedBeforeTheNextLine) {
    // 2,000,000 bytes are one short of the limit.
    writeFile(dir / "Lumora.log", std::string(2'000'000, 'x'));
    writeFile(dir / "Lumora.1.log", "old generation\n");
    auto log = makeLog();
    log->write("a");
    log->flush();
    EXPECT_EQ(std::filesystem::file_size(dir / "Lumora.log"), 2'000'022u);
    EXPECT_EQ(file("Lumora.1.log"), "old generation\n");
    writeFile(dir / "Lumora.log", std::string(2'000'001, 'y'));  // exactly the limit
    log->write("b");
    log->flush();
    EXPECT_EQ(file(), kStamp + " b\n");
    EXPECT_EQ(std::filesystem::file_size(dir / "Lumora.1.log"), 2'000'001u);
    EXPECT_EQ(log->rotatedFile(), dir / "Lumora.1.log");
}

TEST_F(LogTest, TailSkipsBlankLinesAndIsEmptyForAMissingOrUndecodableFile) {
    auto log = makeLog();
    EXPECT_TRUE(log->tail(5).empty());
    writeFile(dir / "Lumora.log", "l1\n\nl2\nl3\n\n");
    EXPECT_TRUE(log->tail(0).empty());
    EXPECT_EQ(log->tail(2), (Lines{"l2", "l3"}));
    EXPECT_EQ(log->tail(99), (Lines{"l1", "l2", "l3"}));
    writeFile(dir / "Lumora.log", std::string("ok\n\xff\xfe broken\n"));
    EXPECT_TRUE(log->tail(5).empty());
}

TEST_F(LogTest, AMissingFolderLosesLinesSilentlyButStillEchoes) {
    std::ostringstream echo;
    auto log = makeLog(&echo, "no-such-folder");
    log->write("lost");
    log->flush();
    EXPECT_FALSE(std::filesystem::exists(dir / "no-such-folder"));
    EXPECT_EQ(echo.str(), kStamp + " lost\n");
}

TEST_F(LogTest, ConcurrentWritersNeverInterleaveWithinALine) {
    auto log = makeLog();
    constexpr int kThreads = 4;
    constexpr int kLines = 200;
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&log, t] {
            for (int i = 0; i < kLines; ++i)
                log->write("writer " + std::to_string(t));
        });
    }
    for (auto& w : writers)
        w.join();
    log->flush();
    const auto lines = log->tail(kThreads * kLines + 10);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kLines));
    for (const auto& line : lines)
        EXPECT_TRUE(line.starts_with(kStamp + " writer ") && line.size() == kStamp.size() + 9)
            << line;
}

TEST(LogStamp, FormatsTwentyFourHourLocalTime) {
    std::tm t = test::fixedLocalTime();
    t.tm_mon = 0;
    t.tm_hour = 23;
    EXPECT_EQ(Log::formatStamp(t), "2026-01-21 23:05:07");
}

}  // namespace
}  // namespace lumora
