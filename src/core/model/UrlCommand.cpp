#include "model/UrlCommand.h"

#include "base/Utf8.h"

#include <cstdint>
#include <cstdio>

namespace lumora {

namespace {

bool isAlpha(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int hexValue(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Space, C0 controls and DEL: never part of a URL.
bool forbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= 0x20 || byte == 0x7F;
}

std::optional<std::string> percentDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out.push_back(text[i]);
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        out.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return out;
}

// scheme ":" with scheme = ALPHA *( ALPHA / DIGIT / "+" / "-" / "." ); the position after ":".
std::optional<std::size_t> afterScheme(std::string_view url) {
    if (url.empty() || !isAlpha(url[0])) return std::nullopt;
    for (std::size_t i = 1; i < url.size(); ++i) {
        const char c = url[i];
        if (c == ':') return i + 1;
        if (!isAlpha(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
    }
    return std::nullopt;
}

// The host of an authority ("user@host:port"), still percent-encoded; nothing when the port
// is not a number or an IP literal is not closed.
std::optional<std::string_view> hostOf(std::string_view authority) {
    if (auto at = authority.rfind('@'); at != std::string_view::npos) {
        authority.remove_prefix(at + 1);
    }
    std::string_view host = authority;
    std::string_view rest;
    if (!authority.empty() && authority.front() == '[') {
        const auto close = authority.find(']');
        if (close == std::string_view::npos) return std::nullopt;
        host = authority.substr(0, close + 1);
        rest = authority.substr(close + 1);
    } else if (auto colon = authority.find(':'); colon != std::string_view::npos) {
        host = authority.substr(0, colon);
        rest = authority.substr(colon);
    }
    if (!rest.empty()) {
        if (rest.front() != ':') return std::nullopt;
        for (char c : rest.substr(1)) {
            if (!isDigit(c)) return std::nullopt;
        }
    }
    return host;
}

bool parseQuery(std::string_view text, Query& query) {
    while (!text.empty()) {
        const auto amp = text.find('&');
        const std::string_view item = text.substr(0, amp);
        text = amp == std::string_view::npos ? std::string_view{} : text.substr(amp + 1);
        if (item.empty()) continue;
        const auto equals = item.find('=');
        auto name = percentDecode(item.substr(0, equals));
        auto value = percentDecode(equals == std::string_view::npos ? std::string_view{}
                                                                    : item.substr(equals + 1));
        if (!name || !value) return false;
        query.insert_or_assign(std::move(*name), std::move(*value));
    }
    return true;
}

void appendCodePoint(std::string& out, const char* format, unsigned value) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, format, value);
    out += buffer;
}

// C1 controls and the two separators some readers take for line breaks.
bool breaksLines(char32_t codePoint) {
    return (codePoint >= 0x80 && codePoint <= 0x9F) || codePoint == 0x2028 || codePoint == 0x2029;
}

}  // namespace

std::optional<UrlCommand> parseCommandUrl(std::string_view url) {
    for (char c : url) {
        if (forbidden(c)) return std::nullopt;
    }
    auto start = afterScheme(url);
    if (!start) return std::nullopt;
    std::string_view rest = url.substr(*start);
    if (rest.substr(0, 2) != "//") return std::nullopt;
    rest.remove_prefix(2);

    const auto fragment = rest.find('#');
    if (fragment != std::string_view::npos) {
        // The fragment is ignored, but it must still be well-formed.
        if (!percentDecode(rest.substr(fragment + 1))) return std::nullopt;
        rest = rest.substr(0, fragment);
    }
    const auto authorityEnd = rest.find_first_of("/?");
    auto host = hostOf(rest.substr(0, authorityEnd));
    if (!host) return std::nullopt;
    auto command = percentDecode(*host);
    if (!command || command->empty()) return std::nullopt;

    UrlCommand result{std::move(*command), {}};
    const std::string_view tail =
        authorityEnd == std::string_view::npos ? std::string_view{} : rest.substr(authorityEnd);
    const auto question = tail.find('?');
    if (!percentDecode(tail.substr(0, question))) return std::nullopt;  // the path
    if (question != std::string_view::npos &&
        !parseQuery(tail.substr(question + 1), result.query)) {
        return std::nullopt;
    }
    return result;
}

std::string escapeForLog(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            switch (c) {
                case '\\':
                    out += "\\\\";
                    break;
                case '"':
                    out += "\\\"";
                    break;
                case '\n':
                    out += "\\n";
                    break;
                case '\r':
                    out += "\\r";
                    break;
                case '\t':
                    out += "\\t";
                    break;
                case '\0':
                    out += "\\0";
                    break;
                default:
                    if (byte < 0x20 || byte == 0x7F) {
                        appendCodePoint(out, "\\u{%x}", byte);
                    } else {
                        out.push_back(c);
                    }
            }
            ++i;
            continue;
        }
        char32_t codePoint = 0;
        const std::size_t length = decodeUtf8(text.substr(i), codePoint);
        if (length == 0) {
            appendCodePoint(out, "\\x{%x}", byte);
            ++i;
        } else if (breaksLines(codePoint)) {
            appendCodePoint(out, "\\u{%x}", static_cast<unsigned>(codePoint));
            i += length;
        } else {
            out.append(text.substr(i, length));
            i += length;
        }
    }
    return out;
}

std::string printQuery(const Query& query) {
    if (query.empty()) return "[:]";
    std::string out = "[";
    bool first = true;
    for (const auto& [name, value] : query) {
        if (!first) out += ", ";
        first = false;
        out += '"' + escapeForLog(name) + "\": \"" + escapeForLog(value) + '"';
    }
    out += ']';
    return out;
}

}  // namespace lumora
