#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumora {

// Number text that neither the user's locale nor the standard library's age can change: the
// decimal point is always ".", and no locale-aware C or C++ call is left to a default locale.

// The fewest significant digits that read back as exactly `value`, written in fixed or
// scientific form, whichever is shorter (fixed on a tie): 600 → "600", 0.25 → "0.25",
// 1e+308, 1e-05, -0, inf, nan.
std::string shortestText(double value);

// `value` rounded to a whole number and written out in full, without exponent: 59.94 → "60".
std::string wholeNumberText(double value);

// A decimal number: an optional "-", digits with an optional "." (at least one digit), and an
// optional exponent ("e" or "E", optional sign, digits). Nothing for any other text (blanks,
// "+", hexadecimal, "inf", "nan") and for values beyond the range of a double.
std::optional<double> parseDecimal(std::string_view text);

}  // namespace lumora
