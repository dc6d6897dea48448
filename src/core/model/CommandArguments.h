#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/UrlCommand.h"

namespace lumora {

// Readers for the values of command URLs. Each answers nothing for text that is not exactly
// such a value: no spaces, no trailing characters.

// The item's value, or nothing when the item is absent.
const std::string* queryItem(const Query& query, std::string_view name);

// Decimal digits with an optional leading "+", at most `max`.
std::optional<std::uint64_t> parseUnsigned(std::string_view text, std::uint64_t max);
// Decimal digits with an optional sign, within 64 bits.
std::optional<std::int64_t> parseInteger(std::string_view text);
// A finite decimal number with an optional sign and exponent ("70", "0.7", "-1", "5e1", ".5").
// Infinities and NaN count as unparsable.
std::optional<double> parseNumber(std::string_view text);
// One to any number of hexadecimal digits after an optional "0x" or "0X", at most 0xFF.
std::optional<std::uint8_t> parseHexByte(std::string_view text);

// "on": true exactly for "1", "true" and "on"; false for any other text; nothing when absent.
std::optional<bool> onArgument(const Query& query);
// "value": a number where anything above 1 is a percentage (70 and 0.7 both mean 0.7).
std::optional<double> levelArgument(const Query& query);

}  // namespace lumora
