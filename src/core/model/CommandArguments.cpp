#include "model/CommandArguments.h"

#include <charconv>

#include "base/InRange.h"
#include "base/NumberText.h"

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
    const bool hasSign = !text.empty() && (text.front() == '+' || text.front() == '-');
    if (!allDigits(text.substr(hasSign ? 1 : 0))) return std::nullopt;
    text = withoutPlus(text);
    std::int64_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<double> parseNumber(std::string_view text) {
    const bool plus = !text.empty() && text.front() == '+';
    text = withoutPlus(text);
    if (plus && !text.empty() && text.front() == '-') return std::nullopt;  // "+-1"
    return parseDecimal(text);
}

std::optional<std::uint8_t> parseHexByte(std::string_view text) {
    if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
    }
    if (text.empty()) return std::nullopt;
    unsigned value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return checked<std::uint8_t>(value);
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
