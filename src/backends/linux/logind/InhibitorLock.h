#pragma once

namespace lumora::lx {

// A logind inhibitor lock: logind keeps the inhibitor while any copy of the file descriptor it
// handed out stays open, so this holds the only copy and closing it releases the lock.
class InhibitorLock {
  public:
    InhibitorLock() = default;
    // Takes ownership of `fd`.
    explicit InhibitorLock(int fd) : fd_(fd) {}
    ~InhibitorLock() { release(); }
    InhibitorLock(InhibitorLock&& other) noexcept;
    InhibitorLock& operator=(InhibitorLock&& other) noexcept;
    InhibitorLock(const InhibitorLock&) = delete;
    InhibitorLock& operator=(const InhibitorLock&) = delete;

    [[nodiscard]] bool held() const { return fd_ >= 0; }
    void release();

  private:
    int fd_ = -1;
};

}  // namespace lumora::lx
