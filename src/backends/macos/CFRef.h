#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <utility>

namespace lumora::mac {

// Owns one CoreFoundation reference obtained under the create or copy rule.
template <typename T>
class CFRef {
  public:
    CFRef() = default;
    explicit CFRef(T ref) : ref_(ref) {}
    ~CFRef() { reset(); }
    CFRef(const CFRef&) = delete;
    CFRef& operator=(const CFRef&) = delete;
    CFRef(CFRef&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    CFRef& operator=(CFRef&& other) noexcept {
        if (this != &other) {
            reset();
            ref_ = std::exchange(other.ref_, nullptr);
        }
        return *this;
    }

    [[nodiscard]] T get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }
    void reset() {
        if (ref_) CFRelease(ref_);
        ref_ = nullptr;
    }

  private:
    T ref_ = nullptr;
};

// UTF-8 into a new string; replacement never fails, so a name with a stray byte still shows.
CFRef<CFStringRef> makeCFString(const std::string& text);
// The UTF-8 text of a string; empty for anything that is not a string.
std::string stringFromCF(CFTypeRef value);

}  // namespace lumora::mac
