#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace lumora {

// Replaces `file` with `text` so that a kill or a full disk at any instant leaves either the
// previous complete file or the new one, never a part: the text is written beside it, flushed,
// then renamed over it. On failure the previous file stays and `why` (when given) says what
// went wrong.
bool replaceFile(const std::filesystem::path& file, std::string_view text,
                 std::string* why = nullptr);

// At most one line per interval about a write that keeps failing (a full disk fails every
// write, and the log must not fill with it).
class FailureThrottle {
  public:
    explicit FailureThrottle(double intervalSeconds = 60) : interval_(intervalSeconds) {}
    // Whether a failure at `now` (seconds, any monotonic origin) is worth a line.
    bool shouldReport(double now) {
        if (reported_ && now - last_ < interval_) return false;
        reported_ = true;
        last_ = now;
        return true;
    }

  private:
    double interval_;
    double last_ = 0;
    bool reported_ = false;
};

}  // namespace lumora
