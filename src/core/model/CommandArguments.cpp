#include "model/CommandArguments.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace lumora {

namespace {

// Above this a "value" is a percentage.
constexpr double kLargestLevel = 1.0;
constexpr double kPercent = 100.0;

std::string_view withoutPlus(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    return text;
}

bool allDigits(std::string_view text) {
    if (text.empty()) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

}  // namespace

const std::string* queryItem(const Query& query, std::string_view name) {
    auto found = query.find(std::string(name));
    return found == query.end() ? nullptr : &found->second;
}

std::optional<std::uint64_t> parseUnsigned(std::string_view text, std::uint64_t max) {
    text = withoutPlus(text);
    if (!allDigits(text)) return std::nullopt;
    std::uint64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value > max) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (!allDigits(text)) return std::nullopt;
    std::uint64_t magnitude = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!negative) {
        if (magnitude > kMax) return std::nullopt;
        return static_cast<std::int64_t>(magnitude);
    }
    if (magnitude > kMax + 1) return std::nullopt;
    return magnitude == kMax + 1 ? std::numeric_limits<std::int64_t>::min()
                                 : -static_cast<std::int64_t>(magnitude);
}

std::optional<double> parseNumber(std::string_view text) {
    const bool plus = !text.empty() && text.front() == '+';
    text = withoutPlus(text);
    // A second sign ("+-1") is not a number; from_chars would take the "-".
    if (text.empty() || (plus && (text.front() == '-' || text.front() == '+'))) {
        return std::nullopt;
    }
    double value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::uint8_t> parseHexByte(std::string_view text) {
    if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
    }
    if (text.empty()) return std::nullopt;
    unsigned value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc{} || end != text.data() + text.size() || value > 0xFF) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(value);
}

std::optional<bool> onArgument(const Query& query) {
    const std::string* text = queryItem(query, "on");
    if (!text) return std::nullopt;
    return *text == "1" || *text == "true" || *text == "on";
}

std::optional<double> levelArgument(const Query& query) {
    const std::string* text = queryItem(query, "value");
    if (!text) return std::nullopt;
    auto value = parseNumber(*text);
    if (value && *value > kLargestLevel) *value /= kPercent;
    return value;
}

}  // namespace lumora
