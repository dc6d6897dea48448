#pragma once

// Private to the sim backend: typed reads of JSON fields that name the field on failure.

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/Check.h"
#include "base/InRange.h"

namespace lumora::sim::fields {

// Thrown by the readers below and caught by the world parser, which turns it into its one
// error line; it never leaves the parser.
struct WorldFieldError {
    std::string message;  // "displays[1].modes[0].width: expected an integer"
};

[[noreturn]] void fail(const std::string& path, const std::string& problem);

std::string keyPath(const std::string& path, std::string_view key);
std::string indexPath(const std::string& path, std::size_t index);
// Keeps an error on one readable line whatever bytes the input held.
std::string printable(std::string_view text);

void onlyKeys(const nlohmann::json& object, const std::string& path,
              std::initializer_list<std::string_view> known);
const nlohmann::json& required(const nlohmann::json& object, const std::string& path,
                               std::string_view key);
const nlohmann::json* optionalKey(const nlohmann::json& object, std::string_view key);
void expectObject(const nlohmann::json& value, const std::string& path);

bool readBool(const nlohmann::json& value, const std::string& path);
std::int64_t readInteger(const nlohmann::json& value, const std::string& path, std::int64_t lo,
                         std::int64_t hi);
// An integer from `lo` to `hi` as T, which must hold that whole range.
template <std::integral T>
T readInteger(const nlohmann::json& value, const std::string& path,
              std::int64_t lo = std::numeric_limits<T>::min(),
              std::int64_t hi = std::numeric_limits<T>::max()) {
    const auto narrowed = checked<T>(readInteger(value, path, lo, hi));
    check(narrowed.has_value(), "a world field's range is wider than its type");
    return *narrowed;
}
double readNumber(const nlohmann::json& value, const std::string& path, double lo, double hi);
std::string readString(const nlohmann::json& value, const std::string& path);
// A two-element array; `what` describes it in the error ("[x, y]").
std::pair<const nlohmann::json*, const nlohmann::json*> readPair(const nlohmann::json& value,
                                                                 const std::string& path,
                                                                 std::string_view what);

}  // namespace lumora::sim::fields
