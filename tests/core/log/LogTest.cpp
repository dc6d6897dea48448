#include "log/Log.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "support/TestSupport.h"

namespace lumora {
namespace {

using test::kFixedStamp;
using test::readFile;
using test::TempDir;
using test::writeFile;

class LogTest : public ::testing::Test {
protected:
    std::unique_ptr<Log> makeLog(std::ostream* echo = nullptr) {
        return std::make_unique<Log>(
            Log::Options{dir / "Lumora.log", test::fixedLocalTime, echo});
    }
    TempDir dir;
};

TEST_F(LogTest, FirstLineCreatesTheFileWithStampAndMessage) {
    std::ostringstream echo;
    auto log = makeLog(&echo);
    log->write("brightness keys: on");
    log->flush();
    const std::string expected = std::string(kFixedStamp) + " brightness keys: on\n";
    EXPECT_EQ(readFile(dir / "Lumora.log"), expected);
    EXPECT_EQ(echo.str(), expected);
}

TEST_F(LogTest, AppendsInOrderAndKeepsLineFeedsOfTheMessage) {
    auto log = makeLog();
    log->write("one");
    log->write("two\nthree");
    log->write("");
    log->flush();
    EXPECT_EQ(readFile(dir / "Lumora.log"), std::string(kFixedStamp) + " one\n" + kFixedStamp +
                                                " two\nthree\n" + kFixedStamp + " \n");
    // The line feed inside a message splits it for tail; blank pieces never show.
    EXPECT_EQ(log->tail(10), (std::vector<std::string>{std::string(kFixedStamp) + " one",
                                                       std::string(kFixedStamp) + " two", "three",
                                                       std::string(kFixedStamp) + " "}));
}

TEST_F(LogTest, FileOfExactlyTheLimitIsNotRotatedButTheNextOneIs) {
    writeFile(dir / "Lumora.log", std::string(2'000'000, 'x'));
    writeFile(dir / "Lumora.1.log", "old generation\n");
    auto log = makeLog();
    log->write("a");  // 2,000,000 bytes: appended, no rotation
    log->flush();
    EXPECT_EQ(std::filesystem::file_size(dir / "Lumora.log"), 2'000'000u + 22u);
    EXPECT_EQ(readFile(dir / "Lumora.1.log"), "old generation\n");
    log->write("b");  // now past the limit: rotated first
    log->flush();
    EXPECT_EQ(readFile(dir / "Lumora.log"), std::string(kFixedStamp) + " b\n");
    EXPECT_EQ(std::filesystem::file_size(dir / "Lumora.1.log"), 2'000'022u);
}

TEST_F(LogTest, FileOfOneByteOverTheLimitReplacesTheOldGeneration) {
    writeFile(dir / "Lumora.log", std::string(2'000'001, 'y'));
    writeFile(dir / "Lumora.1.log", "old generation\n");
    auto log = makeLog();
    log->write("fresh");
    log->flush();
    EXPECT_EQ(readFile(dir / "Lumora.log"), std::string(kFixedStamp) + " fresh\n");
    EXPECT_EQ(std::filesystem::file_size(dir / "Lumora.1.log"), 2'000'001u);
    EXPECT_EQ(log->rotatedFile(), dir / "Lumora.1.log");
}

TEST_F(LogTest, TailCountsAndEdgeCases) {
    writeFile(dir / "Lumora.log", "l1\n\nl2\nl3\n\n");
    auto log = makeLog();
    EXPECT_TRUE(log->tail(0).empty());
    EXPECT_EQ(log->tail(2), (std::vector<std::string>{"l2", "l3"}));
    EXPECT_EQ(log->tail(99), (std::vector<std::string>{"l1", "l2", "l3"}));
}

TEST_F(LogTest, TailOfMissingOrUndecodableFileIsEmpty) {
    auto log = makeLog();
    EXPECT_TRUE(log->tail(5).empty());
    writeFile(dir / "Lumora.log", std::string("ok\n\xff\xfe broken\n"));
    EXPECT_TRUE(log->tail(5).empty());
}

TEST_F(LogTest, MissingFolderLosesLinesSilentlyButStillEchoes) {
    std::ostringstream echo;
    Log log(Log::Options{dir / "no-such-folder" / "Lumora.log", test::fixedLocalTime, &echo});
    log.write("lost");
    log.flush();
    EXPECT_FALSE(std::filesystem::exists(dir / "no-such-folder"));
    EXPECT_EQ(echo.str(), std::string(kFixedStamp) + " lost\n");
}

TEST_F(LogTest, FileRemovedBetweenLinesStartsANewOne) {
    auto log = makeLog();
    log->write("first");
    log->flush();
    std::filesystem::remove(dir / "Lumora.log");
    log->write("second");
    log->flush();
    EXPECT_EQ(readFile(dir / "Lumora.log"), std::string(kFixedStamp) + " second\n");
}

TEST_F(LogTest, ConcurrentWritersNeverInterleaveWithinALine) {
    auto log = makeLog();
    constexpr int kThreads = 4;
    constexpr int kLines = 200;
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&log, t] {
            for (int i = 0; i < kLines; ++i) log->write("writer " + std::to_string(t));
        });
    }
    for (auto& w : writers) w.join();
    log->flush();
    auto lines = log->tail(kThreads * kLines + 10);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kLines));
    for (const auto& line : lines) {
        EXPECT_EQ(line.rfind(std::string(kFixedStamp) + " writer ", 0), 0u) << line;
        EXPECT_EQ(line.size(), std::string(kFixedStamp).size() + 9);
    }
}

TEST(LogStamp, FormatsTwentyFourHourLocalTime) {
    std::tm t{};
    t.tm_year = 2025 - 1900;
    t.tm_mon = 0;
    t.tm_mday = 3;
    t.tm_hour = 23;
    t.tm_min = 4;
    t.tm_sec = 59;
    EXPECT_EQ(Log::formatStamp(t), "2025-01-03 23:04:59");
}

}  // namespace
}  // namespace lumora
