#pragma once

// Strict readers of JSON values: each answers nothing unless the value has exactly the type
// asked for, and none of them throws. Decoders keep their own rules (which keys, which
// ranges) and express them through these few calls.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "base/InRange.h"

namespace lumora::jsonread {

using Json = nlohmann::json;

// An integer literal within 64 signed bits. 5.0 is a float and no integer; an unsigned literal
// beyond the signed range is refused.
std::optional<std::int64_t> integer(const Json& value);
// Any finite number, integer literals included: many encoders write 600.0 as 600.
std::optional<double> number(const Json& value);
std::optional<bool> boolean(const Json& value);
std::optional<std::string> string(const Json& value);

// An integer literal that is exactly a T.
template <std::integral T>
std::optional<T> integer(const Json& value) {
    const auto wide = integer(value);
    return wide ? checked<T>(*wide) : std::nullopt;
}

// The member `key`; nullptr when `object` is no object or lacks the key.
const Json* member(const Json& object, std::string_view key);

// The same readers for the member `key` of `object`; nothing when it is absent.
std::optional<std::int64_t> integer(const Json& object, std::string_view key);
std::optional<double> number(const Json& object, std::string_view key);
std::optional<bool> boolean(const Json& object, std::string_view key);
std::optional<std::string> string(const Json& object, std::string_view key);

template <std::integral T>
std::optional<T> integer(const Json& object, std::string_view key) {
    const Json* found = member(object, key);
    return found ? integer<T>(*found) : std::nullopt;
}

// Stores a value that was read; false when there was none, so that a decoder can chain its
// fields with &&.
template <typename T>
bool assign(T& out, std::optional<T> value) {
    if (!value) return false;
    out = std::move(*value);
    return true;
}

}  // namespace lumora::jsonread
