#include "base/NumberText.h"

#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <locale>
#include <sstream>

namespace lumora {

namespace {

// Seventeen significant digits tell every pair of doubles apart.
constexpr int kMaxDigits = 17;
// Exponents are written with at least two digits ("1e+05"), as printf and to_chars do.
constexpr int kMinExponentDigits = 2;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Streams in the classic locale format and read numbers with "." whatever the process set.
std::ostringstream classicOut() {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    return out;
}

// Reads text already known to be a well-formed decimal number, with "." whatever the process
// locale. libc++ marks a result below the normal range as a failure but still delivers it;
// such a result is a number like any other here.
std::optional<double> readWellFormed(const std::string& text) {
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    double value = 0;
    in >> value;
    if (in.fail()) {
        const int kind = std::fpclassify(value);
        if (kind != FP_SUBNORMAL && kind != FP_ZERO) return std::nullopt;
    }
    return value;
}

// The significant digits of a positive finite value and the power of ten of the first one.
struct Decimal {
    std::string digits;
    int exponent = 0;
};

Decimal toDecimal(double value, int significant) {
    auto out = classicOut();
    out << std::scientific << std::setprecision(significant - 1) << value;
    const std::string text = out.str();  // "d.ddde+XX"
    const auto e = text.find('e');
    Decimal decimal;
    for (char c : text.substr(0, e)) {
        if (isDigit(c)) decimal.digits += c;
    }
    decimal.exponent = std::atoi(text.c_str() + e + 1);
    return decimal;
}

std::string scientific(const Decimal& d) {
    std::string text = d.digits.substr(0, 1);
    if (d.digits.size() > 1) {
        text += '.';
        text.append(d.digits, 1);
    }
    const std::string power = std::to_string(std::abs(d.exponent));
    text += d.exponent < 0 ? "e-" : "e+";
    text += std::string(power.size() < kMinExponentDigits ? kMinExponentDigits - power.size() : 0,
                        '0') +
            power;
    return text;
}

// A whole number is written with all its digits, exact rather than padded with zeros.
std::string fixed(const Decimal& d, double value) {
    const auto count = static_cast<int>(d.digits.size());
    if (d.exponent < 0) {
        return "0." + std::string(static_cast<std::size_t>(-d.exponent - 1), '0') + d.digits;
    }
    if (d.exponent >= count - 1) return wholeNumberText(value);
    const auto point = static_cast<std::size_t>(d.exponent + 1);
    return d.digits.substr(0, point) + "." + d.digits.substr(point);
}

// `d` with its last digit moved by `step` (±1), carrying as needed; empty when that leaves
// the length it had (9…9 + 1, 10…0 - 1), which no shorter-or-equal candidate can be.
std::optional<Decimal> neighbour(Decimal d, int step) {
    for (auto i = d.digits.size(); i-- > 0;) {
        char& c = d.digits[i];
        if (step > 0 ? c < '9' : c > '0') {
            c = static_cast<char>(c + step);
            if (d.digits.front() == '0') return std::nullopt;
            return d;
        }
        c = step > 0 ? '0' : '9';
    }
    return std::nullopt;
}

bool readsBackAs(const Decimal& d, double value) {
    return readWellFormed(scientific(d)) == value;
}

// The shortest digits that read back as `value`. Among equally short ones the nearest is the
// correctly rounded one, unless it falls just outside the narrower half of the interval at a
// power of two; then one of its neighbours is the answer.
Decimal shortest(double value) {
    for (int significant = 1; significant < kMaxDigits; ++significant) {
        const Decimal rounded = toDecimal(value, significant);
        if (readsBackAs(rounded, value)) return rounded;
        for (int step : {-1, 1}) {
            auto other = neighbour(rounded, step);
            if (other && readsBackAs(*other, value)) return *other;
        }
    }
    return toDecimal(value, kMaxDigits);
}

}  // namespace

std::string shortestText(double value) {
    if (std::isnan(value)) return std::signbit(value) ? "-nan" : "nan";
    const std::string sign = std::signbit(value) ? "-" : "";
    if (std::isinf(value)) return sign + "inf";
    if (value == 0) return sign + "0";
    const double magnitude = std::fabs(value);
    const Decimal d = shortest(magnitude);
    const std::string asFixed = fixed(d, magnitude);
    const std::string asScientific = scientific(d);
    return sign + (asFixed.size() <= asScientific.size() ? asFixed : asScientific);
}

std::string wholeNumberText(double value) {
    auto out = classicOut();
    out << std::fixed << std::setprecision(0) << std::round(value);
    return out.str();
}

std::optional<double> parseDecimal(std::string_view text) {
    std::size_t i = 0;
    if (i < text.size() && text[i] == '-') ++i;
    std::size_t mantissaDigits = 0;
    bool nonZero = false;
    auto digits = [&](std::size_t& count) {
        while (i < text.size() && isDigit(text[i])) {
            nonZero = nonZero || text[i] != '0';
            ++count;
            ++i;
        }
    };
    digits(mantissaDigits);
    if (i < text.size() && text[i] == '.') {
        ++i;
        digits(mantissaDigits);
    }
    if (mantissaDigits == 0) return std::nullopt;
    const bool mantissaNonZero = nonZero;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        std::size_t exponentDigits = 0;
        digits(exponentDigits);
        if (exponentDigits == 0) return std::nullopt;
    }
    if (i != text.size()) return std::nullopt;
    auto value = readWellFormed(std::string(text));
    // Too large, or so small that nothing but zero is left of it.
    if (!value || !std::isfinite(*value) || (*value == 0 && mantissaNonZero)) return std::nullopt;
    return value;
}

}  // namespace lumora
