#include "sim/WorldFields.h"

#include <algorithm>
#include <locale>
#include <sstream>

#include "base/JsonRead.h"

namespace lumora::sim::fields {

using nlohmann::json;

[[noreturn]] void fail(const std::string& path, const std::string& problem) {
    throw WorldFieldError{path.empty() ? problem : path + ": " + problem};
}

std::string keyPath(const std::string& path, std::string_view key) {
    return path.empty() ? std::string(key) : path + "." + std::string(key);
}

std::string indexPath(const std::string& path, std::size_t index) {
    return path + "[" + std::to_string(index) + "]";
}

std::string printable(std::string_view text) {
    std::string out;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        out += (byte >= 0x20 && byte < 0x7F) ? c : '?';
    }
    return out;
}

void onlyKeys(const json& object, const std::string& path,
              std::initializer_list<std::string_view> known) {
    for (const auto& [key, value] : object.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            fail(keyPath(path, printable(key)), "unknown key");
        }
    }
}

const json& required(const json& object, const std::string& path, std::string_view key) {
    auto it = object.find(key);
    if (it == object.end()) fail(path, "missing \"" + std::string(key) + "\"");
    return *it;
}

const json* optionalKey(const json& object, std::string_view key) {
    auto it = object.find(key);
    return it == object.end() ? nullptr : &*it;
}

void expectObject(const json& value, const std::string& path) {
    if (!value.is_object()) fail(path, "expected an object");
}

bool readBool(const json& value, const std::string& path) {
    const auto flag = jsonread::boolean(value);
    if (!flag) fail(path, "expected true or false");
    return *flag;
}

std::int64_t readInteger(const json& value, const std::string& path, std::int64_t lo,
                         std::int64_t hi) {
    const auto v = jsonread::integer(value);
    // An integer literal beyond 64 bits is out of range, not of the wrong type.
    if (!v && !value.is_number_integer()) fail(path, "expected an integer");
    if (!v || *v < lo || *v > hi) {
        fail(path, "expected an integer from " + std::to_string(lo) + " to " + std::to_string(hi));
    }
    return *v;
}

double readNumber(const json& value, const std::string& path, double lo, double hi) {
    const auto v = jsonread::number(value);
    if (!v) fail(path, "expected a number");
    if (!(*v >= lo && *v <= hi)) {
        std::ostringstream range;
        range.imbue(std::locale::classic());  // "0.5", whatever the user's locale
        range << "expected a number from " << lo << " to " << hi;
        fail(path, range.str());
    }
    return *v;
}

std::string readString(const json& value, const std::string& path) {
    auto text = jsonread::string(value);
    if (!text) fail(path, "expected a string");
    return std::move(*text);
}

std::pair<const json*, const json*> readPair(const json& value, const std::string& path,
                                             std::string_view what) {
    if (!value.is_array() || value.size() != 2) fail(path, "expected " + std::string(what));
    return {&value[0], &value[1]};
}

}  // namespace lumora::sim::fields
