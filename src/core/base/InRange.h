#pragma once

#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <utility>

namespace lumora {

// Whether `value` is exactly a value of the integer type T: integers compare by value whatever
// their signedness; a floating-point value must be finite, whole and inside T's range.
template <std::integral T, typename U>
requires std::integral<U> || std::floating_point<U>
constexpr bool inRange(U value) {
    if constexpr (std::integral<U>) {
        return std::in_range<T>(value);
    } else {
        // T's bounds as powers of two, which every binary floating-point type holds exactly.
        constexpr U kPastMax = static_cast<U>(std::numeric_limits<T>::max() / 2 + 1) * U{2};
        constexpr U kMin = static_cast<U>(std::numeric_limits<T>::min());
        if (!std::isfinite(value) || std::trunc(value) != value) return false;
        return value >= kMin && value < kPastMax;
    }
}

// `value` as T, or nothing when it is not exactly a T (see inRange).
template <std::integral T, typename U>
requires std::integral<U> || std::floating_point<U>
constexpr std::optional<T> checked(U value) {
    if (!inRange<T>(value)) return std::nullopt;
    return static_cast<T>(value);
}

}  // namespace lumora
