#include "hw/SysfsFiles.h"

#include <charconv>
#include <cstddef>
#include <fstream>
#include <limits>

namespace lumora::lx {

namespace {

// sysfs attributes are at most one page; anything longer is not one.
constexpr std::size_t kMaxAttributeBytes = 4096;
// Brightness values and counts are ints in the kernel.
constexpr std::uint32_t kMaxCount = std::numeric_limits<std::int32_t>::max();

}  // namespace

std::optional<std::string> readAttribute(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    std::string text(kMaxAttributeBytes + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (in.bad()) return std::nullopt;
    const auto got = static_cast<std::size_t>(in.gcount());
    if (got > kMaxAttributeBytes) return std::nullopt;
    text.resize(got);
    const auto end = text.find_last_not_of(" \t\r\n");
    text.resize(end == std::string::npos ? 0 : end + 1);
    return text;
}

std::optional<std::uint32_t> parseCount(std::string_view text) {
    if (text.empty()) return std::nullopt;
    for (char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
    }
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value > kMaxCount)
        return std::nullopt;
    return static_cast<std::uint32_t>(value);
}

}  // namespace lumora::lx
