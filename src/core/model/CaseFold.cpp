#include "model/CaseFold.h"

#include "base/Utf8.h"

namespace lumora {

namespace {

// The lower-case partner of a capital letter of the covered scripts, or the code point itself.
char32_t lower(char32_t c) {
    if (c >= U'A' && c <= U'Z') return c + 0x20;
    if (c < 0xC0) return c;
    // Latin-1: À…Þ except the multiplication sign.
    if (c <= 0xDE) return c == 0xD7 ? c : c + 0x20;
    if (c >= 0x100 && c <= 0x17F) {
        // Latin Extended-A alternates capital/small, with the pairs shifted by one in
        // Ĺ…Ň and Ź…Ž; İ (0x130) and ĸ (0x138) stand alone; Ÿ pairs with ÿ in Latin-1.
        if (c == 0x130) return U'i';
        if (c == 0x178) return 0xFF;
        if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) {
            return (c % 2 == 1) ? c + 1 : c;
        }
        if (c == 0x138 || c == 0x149 || c == 0x17F) return c;
        return (c % 2 == 0) ? c + 1 : c;
    }
    // Greek capitals Α…Ω (0x3A2 is unassigned) and the accented ones.
    if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return c + 0x20;
    if (c == 0x386) return 0x3AC;
    if (c >= 0x388 && c <= 0x38A) return c + 0x25;
    if (c == 0x38C) return 0x3CC;
    if (c == 0x38E || c == 0x38F) return c + 0x3F;
    // Cyrillic: Ѐ…Џ, А…Я, then the pairs of the historic and non-Russian letters.
    if (c >= 0x400 && c <= 0x40F) return c + 0x50;
    if (c >= 0x410 && c <= 0x42F) return c + 0x20;
    if ((c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) || (c >= 0x4D0 && c <= 0x52F)) {
        return (c % 2 == 0) ? c + 1 : c;
    }
    if (c == 0x4C0) return 0x4CF;
    if (c >= 0x4C1 && c <= 0x4CE) return (c % 2 == 1) ? c + 1 : c;
    return c;
}

}  // namespace

std::string foldCase(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        char32_t c = 0;
        const std::size_t length = decodeUtf8(text.substr(i), c);
        if (length == 0) {
            out.push_back(text[i]);  // not UTF-8: kept as it is
            ++i;
            continue;
        }
        appendUtf8(out, lower(c));
        i += length;
    }
    return out;
}

bool containsIgnoringCase(std::string_view haystack, std::string_view needle) {
    if (needle.empty()) return false;
    return foldCase(haystack).find(foldCase(needle)) != std::string::npos;
}

}  // namespace lumora
