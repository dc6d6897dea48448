#include "logind/InhibitorLock.h"

#include <unistd.h>

#include <utility>

namespace lumora::lx {

InhibitorLock::InhibitorLock(InhibitorLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

InhibitorLock& InhibitorLock::operator=(InhibitorLock&& other) noexcept {
    if (this != &other) {
        release();
        fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
}

void InhibitorLock::release() {
    if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

}  // namespace lumora::lx
