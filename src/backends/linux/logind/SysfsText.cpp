#include "logind/SysfsText.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>

namespace lumora::lx {

namespace {

// Attributes hold one short value; more than this is not an attribute we understand.
constexpr std::size_t kMaxAttributeBytes = 4096;
constexpr std::string_view kSpace = " \t\r\n";

template <class T, class... Options>
std::optional<T> parseWhole(std::string_view text, Options... options) {
    T value{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, options...);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

}  // namespace

std::optional<std::string> readSysfsText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    std::string text(kMaxAttributeBytes + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (in.bad()) return std::nullopt;
    text.resize(static_cast<std::size_t>(in.gcount()));
    if (text.size() > kMaxAttributeBytes) return std::nullopt;
    const auto first = text.find_first_not_of(kSpace);
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::optional<long long> parseInteger(std::string_view text, int base) {
    return parseWhole<long long>(text, base);
}

std::optional<double> parseDecimal(std::string_view text) {
    const auto value = parseWhole<double>(text);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    return value;
}

}  // namespace lumora::lx
