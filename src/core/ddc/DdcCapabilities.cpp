#include "ddc/DdcCapabilities.h"

#include <array>
#include <cctype>
#include <utility>

#include "ddc/VCP.h"

namespace lumora {

namespace {

// Deeper than any real string nests; deeper text is refused rather than recursed into.
constexpr int kMaxDepth = 8;

// One "name(body)" at the top level of a list, or a bare token.
struct Item {
    std::string_view name;
    std::string_view body;  // inside the parentheses; empty for a bare token
    bool hasBody = false;
};

bool printable(std::string_view text) {
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte >= 0x7F) return false;
    }
    return true;
}

// Splits a list into items; nothing when the parentheses do not balance.
std::optional<std::vector<Item>> items(std::string_view text) {
    std::vector<Item> out;
    std::size_t i = 0;
    while (i < text.size()) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        if (text[i] == ')') return std::nullopt;
        const std::size_t start = i;
        while (i < text.size() && text[i] != ' ' && text[i] != '(' && text[i] != ')')
            ++i;
        Item item{text.substr(start, i - start), {}, false};
        if (i < text.size() && text[i] == '(') {
            int depth = 0;
            const std::size_t open = i;
            for (; i < text.size(); ++i) {
                if (text[i] == '(' && ++depth > kMaxDepth) return std::nullopt;
                if (text[i] == ')' && --depth == 0) break;
            }
            if (i >= text.size()) return std::nullopt;
            item.body = text.substr(open + 1, i - open - 1);
            item.hasBody = true;
            ++i;
        }
        out.push_back(item);
    }
    return out;
}

std::optional<std::uint8_t> hexPair(std::string_view token) {
    if (token.size() != 2) return std::nullopt;
    unsigned value = 0;
    for (char c : token) {
        const int digit = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                          : std::isxdigit(static_cast<unsigned char>(c))
                              ? (std::tolower(c) - 'a' + 10)
                              : -1;
        if (digit < 0) return std::nullopt;
        value = value * 16 + static_cast<unsigned>(digit);
    }
    return static_cast<std::uint8_t>(value);
}

// "10 12 60(0F 11)": codes, some with their values. Some monitors write codes without
// spaces ("101260"): a bare token of an even number of hex digits is split into pairs.
std::optional<std::map<std::uint8_t, std::vector<std::uint8_t>>> vcpList(std::string_view body) {
    auto list = items(body);
    if (!list) return std::nullopt;
    std::map<std::uint8_t, std::vector<std::uint8_t>> out;
    for (const Item& item : *list) {
        if (item.name.empty() || item.name.size() % 2 != 0) return std::nullopt;
        std::uint8_t code = 0;
        for (std::size_t at = 0; at < item.name.size(); at += 2) {
            auto pair = hexPair(item.name.substr(at, 2));
            if (!pair) return std::nullopt;
            code = *pair;
            out.try_emplace(code);
        }
        if (!item.hasBody) continue;
        auto values = items(item.body);
        if (!values) return std::nullopt;
        for (const Item& value : *values) {
            auto byte = value.hasBody ? std::nullopt : hexPair(value.name);
            if (!byte) return std::nullopt;
            out[code].push_back(*byte);
        }
    }
    return out;
}

}  // namespace

std::optional<DdcCapabilities> parseCapabilities(std::string_view text) {
    while (!text.empty() && (text.back() == '\0' || text.back() == ' '))
        text.remove_suffix(1);
    if (!printable(text)) return std::nullopt;
    // The whole string is one parenthesised list; some monitors leave the outer pair out.
    if (text.size() >= 2 && text.front() == '(' && text.back() == ')') {
        text = text.substr(1, text.size() - 2);
    }
    auto top = items(text);
    if (!top) return std::nullopt;
    DdcCapabilities caps;
    bool hasVcp = false;
    for (const Item& item : *top) {
        if (item.name == "model") caps.model = item.body;
        if (item.name == "mccs_ver") caps.mccs = item.body;
        if (item.name == "vcp" && item.hasBody) {
            auto codes = vcpList(item.body);
            if (!codes) return std::nullopt;
            caps.vcp = std::move(*codes);
            hasVcp = true;
        }
    }
    if (!hasVcp) return std::nullopt;
    return caps;
}

std::string inputSourceName(std::uint8_t value) {
    static constexpr std::array<std::pair<std::uint8_t, const char*>, 18> kNames = {{
        {0x01, "VGA 1"},
        {0x02, "VGA 2"},
        {0x03, "DVI 1"},
        {0x04, "DVI 2"},
        {0x05, "Composite 1"},
        {0x06, "Composite 2"},
        {0x07, "S-Video 1"},
        {0x08, "S-Video 2"},
        {0x09, "Tuner 1"},
        {0x0A, "Tuner 2"},
        {0x0B, "Tuner 3"},
        {0x0C, "Component 1"},
        {0x0D, "Component 2"},
        {0x0E, "Component 3"},
        {0x0F, "DisplayPort 1"},
        {0x10, "DisplayPort 2"},
        {0x11, "HDMI 1"},
        {0x12, "HDMI 2"},
    }};
    for (const auto& [code, name] : kNames) {
        if (code == value) return name;
    }
    return hexCode(value);
}

}  // namespace lumora
