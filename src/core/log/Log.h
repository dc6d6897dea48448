#pragma once

#include <condition_variable>
#include <cstdint>
#include <ctime>
#include <deque>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumora {

// The event log: one time-stamped line per event, echoed to standard output and appended to
// a plain-text file on its own serial queue, so callers never wait for the disk.
class Log {
public:
    struct Options {
        std::filesystem::path file;  // e.g. ~/Library/Logs/Lumora.log; its folder must exist
        std::function<std::tm()> localTime;  // the wall clock, broken down in local time
        std::ostream* echo = nullptr;  // standard output in production; nothing in tests
    };

    // A file that has reached this size is rotated before the next line is appended.
    static constexpr std::uintmax_t kRotateAtBytes = 2'000'001;

    explicit Log(Options options);
    // Lines still queued are written before the log goes away.
    ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    // Safe from any thread; never fails visibly.
    void write(std::string_view message);

    // At most the last `count` non-empty lines of the current file, oldest first.
    // Reads the disk directly, so lines still queued are not seen (see flush).
    [[nodiscard]] std::vector<std::string> tail(int count) const;

    [[nodiscard]] const std::filesystem::path& file() const { return options_.file; }
    // The single rotated generation: Lumora.log -> Lumora.1.log.
    [[nodiscard]] std::filesystem::path rotatedFile() const;

    // Blocks until every line written so far is on disk.
    void flush();

    static std::string formatStamp(const std::tm& time);

private:
    void run();
    void append(const std::string& line) const;

    Options options_;
    std::mutex echoMutex_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable drained_;
    std::deque<std::string> pending_;
    bool busy_ = false;
    bool stopping_ = false;
    std::thread worker_;  // the "lumora.log" queue; last member so it starts fully built
};

}  // namespace lumora
