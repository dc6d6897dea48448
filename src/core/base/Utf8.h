#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumora {

// Decodes the UTF-8 sequence at the start of `s` into `codePoint` and returns its length in
// bytes; 0 when `s` is empty or does not start with a valid sequence (overlong forms,
// surrogates and code points above U+10FFFF are invalid).
inline std::size_t decodeUtf8(std::string_view s, char32_t& codePoint) {
    if (s.empty()) return 0;
    const auto lead = static_cast<unsigned char>(s[0]);
    std::size_t extra = 0;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        extra = 1;
        codePoint = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        extra = 2;
        codePoint = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        extra = 3;
        codePoint = lead & 0x07;
    } else {
        return 0;
    }
    if (extra >= s.size()) return 0;
    for (std::size_t k = 1; k <= extra; ++k) {
        const auto next = static_cast<unsigned char>(s[k]);
        if ((next & 0xC0) != 0x80) return 0;
        codePoint = (codePoint << 6) | (next & 0x3F);
    }
    static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (codePoint < kSmallest[extra] || codePoint > 0x10FFFF ||
        (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
        return 0;
    }
    return extra + 1;
}

// Appends the UTF-8 form of `codePoint`, which must be a Unicode scalar value (what
// decodeUtf8 delivers, or a case partner of one).
inline void appendUtf8(std::string& out, char32_t codePoint) {
    auto byte = [&out](char32_t bits) { out.push_back(static_cast<char>(bits)); };
    if (codePoint < 0x80) {
        byte(codePoint);
    } else if (codePoint < 0x800) {
        byte(0xC0 | (codePoint >> 6));
        byte(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        byte(0xE0 | (codePoint >> 12));
        byte(0x80 | ((codePoint >> 6) & 0x3F));
        byte(0x80 | (codePoint & 0x3F));
    } else {
        byte(0xF0 | (codePoint >> 18));
        byte(0x80 | ((codePoint >> 12) & 0x3F));
        byte(0x80 | ((codePoint >> 6) & 0x3F));
        byte(0x80 | (codePoint & 0x3F));
    }
}

inline bool isValidUtf8(std::string_view s) {
    std::size_t i = 0;
    char32_t codePoint = 0;
    while (i < s.size()) {
        const std::size_t length = decodeUtf8(s.substr(i), codePoint);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

}  // namespace lumora
