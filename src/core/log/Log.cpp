#include "log/Log.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <system_error>

#include "base/Check.h"
#include "base/Utf8.h"

namespace lumora {

namespace fs = std::filesystem;

Log::Log(Options options) : options_(std::move(options)), worker_([this] { run(); }) {}

Log::~Log() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    worker_.join();
}

std::string Log::formatStamp(const std::tm& time) {
    char buffer[32];
    std::size_t n = std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &time);
    return std::string(buffer, n);
}

fs::path Log::rotatedFile() const {
    fs::path rotated = options_.file;
    rotated.replace_extension("1.log");
    return rotated;
}

void Log::write(std::string_view message) {
    // The stamp is the time of the call, not of the disk write.
    std::tm now = options_.localTime ? options_.localTime() : std::tm{};
    std::string line = formatStamp(now);
    line += ' ';
    line += message;
    line += '\n';
    if (options_.echo != nullptr) {
        std::lock_guard lock(echoMutex_);
        *options_.echo << line << std::flush;
    }
    {
        std::lock_guard lock(mutex_);
        pending_.push_back(std::move(line));
    }
    wake_.notify_one();
}

void Log::flush() {
    std::unique_lock lock(mutex_);
    drained_.wait(lock, [this] { return pending_.empty() && !busy_; });
}

void Log::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !pending_.empty(); });
        if (pending_.empty()) {
            if (stopping_) return;
            continue;
        }
        std::string line = std::move(pending_.front());
        pending_.pop_front();
        busy_ = true;
        lock.unlock();
        append(line);
        lock.lock();
        busy_ = false;
        if (pending_.empty()) drained_.notify_all();
    }
}

// One line at a time: rotate when the file has grown past the limit, then open, append, close.
// Every file-system error is swallowed; a lost line was still echoed. A line the disk has no
// room for is cut off again, so the file always ends with a whole line.
void Log::append(const std::string& line) const {
    std::error_code ec;
    auto size = fs::file_size(options_.file, ec);
    if (!ec && size >= kRotateAtBytes) {
        fs::path rotated = rotatedFile();
        fs::remove(rotated, ec);
        fs::rename(options_.file, rotated, ec);
    }
    // Opening without truncation fails when there is no file yet, which then gets created whole.
    std::ofstream out(options_.file, std::ios::binary | std::ios::in | std::ios::ate);
    if (!out.is_open()) {
        out.open(options_.file, std::ios::binary | std::ios::trunc);
        if (!out.is_open()) return;
    }
    const auto before = out.tellp();
    out.write(line.data(), static_cast<std::streamsize>(line.size()));
    out.flush();
    if (out || before < 0) return;
    out.close();
    fs::resize_file(options_.file, static_cast<std::uintmax_t>(before), ec);
}

std::vector<std::string> Log::tail(int count) const {
    check(count >= 0, "Log::tail with a negative count");
    std::ifstream in(options_.file, std::ios::binary);
    if (!in.is_open()) return {};
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!isValidUtf8(text)) return {};
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        if (end > start) lines.emplace_back(text, start, end - start);
        start = end + 1;
    }
    auto first = lines.size() > static_cast<std::size_t>(count)
                     ? lines.size() - static_cast<std::size_t>(count)
                     : 0;
    return {std::make_move_iterator(lines.begin() + static_cast<std::ptrdiff_t>(first)),
            std::make_move_iterator(lines.end())};
}

}  // namespace lumora
