#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace lumora {

// The user's persistent key-value store (the user defaults on macOS, QSettings elsewhere).
//
// A stored value is one of: boolean, integer, double, string, data (bytes, held as a JSON
// binary), array, or dictionary. Values are kept as JSON so that corrupt or foreign entries
// (a dictionary with numbers in it, a string where a number belongs) can still be represented
// and rejected by the reader instead of being lost by the store.
class Defaults {
  public:
    using Value = nlohmann::json;
    using Bytes = std::vector<std::uint8_t>;

    virtual ~Defaults() = default;

    [[nodiscard]] virtual std::optional<Value> object(std::string_view key) const = 0;
    virtual void set(std::string_view key, Value value) = 0;
    virtual void remove(std::string_view key) = 0;

    [[nodiscard]] bool contains(std::string_view key) const { return object(key).has_value(); }

    // Typed readers. Each returns nothing when the key is absent or holds another type;
    // numbers convert between integer and double (a double only when it is a whole number in
    // range), nothing else converts, and a number must be finite.
    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key) const;
    [[nodiscard]] std::optional<double> number(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> string(std::string_view key) const;
    [[nodiscard]] std::optional<Bytes> data(std::string_view key) const;
    [[nodiscard]] std::optional<std::vector<std::string>> stringArray(std::string_view key) const;
    // Nothing unless the value is a dictionary whose values are all strings.
    [[nodiscard]] std::optional<std::map<std::string, std::string>> stringDictionary(
        std::string_view key) const;

    void setBoolean(std::string_view key, bool v) { set(key, Value(v)); }
    void setInteger(std::string_view key, std::int64_t v) { set(key, Value(v)); }
    void setNumber(std::string_view key, double v) { set(key, Value(v)); }
    void setString(std::string_view key, std::string v) { set(key, Value(std::move(v))); }
    void setData(std::string_view key, Bytes bytes) { set(key, Value::binary(std::move(bytes))); }
    void setStringArray(std::string_view key, const std::vector<std::string>& v) {
        set(key, Value(v));
    }
    void setStringDictionary(std::string_view key, const std::map<std::string, std::string>& v) {
        set(key, Value(v));
    }

    // Structured settings are stored as the UTF-8 bytes of their JSON text.
    [[nodiscard]] std::optional<nlohmann::json> jsonData(std::string_view key) const;
    void setJsonData(std::string_view key, const nlohmann::json& value);
};

}  // namespace lumora
