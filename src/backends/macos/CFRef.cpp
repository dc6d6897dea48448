#include "CFRef.h"

#include <vector>

namespace lumora::mac {

CFRef<CFStringRef> makeCFString(const std::string& text) {
    CFStringRef made =
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
    // Invalid UTF-8: read the bytes as Latin-1, which accepts every byte.
    if (!made) {
        made = CFStringCreateWithBytes(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
            static_cast<CFIndex>(text.size()), kCFStringEncodingISOLatin1, false);
    }
    return CFRef<CFStringRef>(made);
}

std::string stringFromCF(CFTypeRef value) {
    if (!value || CFGetTypeID(value) != CFStringGetTypeID()) return {};
    const auto string = static_cast<CFStringRef>(value);
    const CFIndex length = CFStringGetLength(string);
    const CFIndex capacity = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1;
    if (capacity <= 0) return {};
    std::vector<char> buffer(static_cast<std::size_t>(capacity));
    if (!CFStringGetCString(string, buffer.data(), capacity, kCFStringEncodingUTF8)) return {};
    return std::string(buffer.data());
}

}  // namespace lumora::mac
