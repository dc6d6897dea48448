#include "base/JsonRead.h"

#include <cmath>

namespace lumora::jsonread {

// Every reader looks at the value's type before converting, so no conversion can throw.

std::optional<std::int64_t> integer(const Json& value) {
    // Non-negative literals arrive unsigned.
    if (value.is_number_unsigned()) return checked<std::int64_t>(value.get<std::uint64_t>());
    if (value.is_number_integer()) return value.get<std::int64_t>();
    return std::nullopt;
}

std::optional<double> number(const Json& value) {
    if (!value.is_number()) return std::nullopt;
    // JSON text has no infinities, but a value built in code may.
    const double result = value.get<double>();
    if (!std::isfinite(result)) return std::nullopt;
    return result;
}

std::optional<bool> boolean(const Json& value) {
    if (!value.is_boolean()) return std::nullopt;
    return value.get<bool>();
}

std::optional<std::string> string(const Json& value) {
    if (!value.is_string()) return std::nullopt;
    return value.get<std::string>();
}

const Json* member(const Json& object, std::string_view key) {
    if (!object.is_object()) return nullptr;
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::int64_t> integer(const Json& object, std::string_view key) {
    const Json* found = member(object, key);
    return found ? integer(*found) : std::nullopt;
}

std::optional<double> number(const Json& object, std::string_view key) {
    const Json* found = member(object, key);
    return found ? number(*found) : std::nullopt;
}

std::optional<bool> boolean(const Json& object, std::string_view key) {
    const Json* found = member(object, key);
    return found ? boolean(*found) : std::nullopt;
}

std::optional<std::string> string(const Json& object, std::string_view key) {
    const Json* found = member(object, key);
    return found ? string(*found) : std::nullopt;
}

}  // namespace lumora::jsonread
