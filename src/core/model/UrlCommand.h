#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace lumora {

// The query of a command URL: item name -> value, both percent-decoded. An item without a
// value maps to the empty string; when a name repeats, the later item wins.
using Query = std::map<std::string, std::string>;

// lumora://<command>?<name>=<value>&...
struct UrlCommand {
    std::string command;  // the URL's host, percent-decoded, case kept
    Query query;

    friend bool operator==(const UrlCommand&, const UrlCommand&) = default;
};

// Nothing for text that is not a URL with a host. The scheme is not checked (the system only
// hands over URLs of ours). Rules where URL parsers differ:
// - spaces and control characters anywhere make the text no URL (scripts percent-encode them);
//   other characters, non-ASCII included, are taken as they are;
// - a "%" not followed by two hexadecimal digits makes the text no URL;
// - "+" stays a plus sign (it is not a space outside HTML forms);
// - empty items ("a=1&&b=2") are skipped; the fragment is ignored.
std::optional<UrlCommand> parseCommandUrl(std::string_view url);

// Text made safe for one log line: backslash and double quote are escaped with a backslash,
// \n \r \t \0 keep their usual escapes, every other control character (C0, DEL, C1) and the
// Unicode line and paragraph separators become \u{hex}, and bytes that are not UTF-8 become
// \x{hex}. Everything else is kept, so ordinary names read as they are.
std::string escapeForLog(std::string_view text);

// The query as one line, names in sorted order: ["display": "main", "value": "70"]; [:] when
// empty. Names and values go through escapeForLog, so no value can start a new log line.
std::string printQuery(const Query& query);

}  // namespace lumora
