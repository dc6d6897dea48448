#include "runtime/AutostartEntry.h"

namespace lumora::app {

namespace {

// Characters that make an Exec argument need quotes.
constexpr std::string_view kReserved = " \t\n\"'\\><~|&;$*?#()`";
// Inside quotes these are escaped with a backslash.
constexpr std::string_view kEscapedInQuotes = "\"`$\\";

}  // namespace

std::string quoteExecArgument(std::string_view argument) {
    std::string out;
    const bool quoted =
        argument.empty() || argument.find_first_of(kReserved) != std::string_view::npos;
    if (quoted) out += '"';
    for (char c : argument) {
        if (c == '%') {
            out += "%%";  // a lone % would start a field code
            continue;
        }
        if (quoted && kEscapedInQuotes.find(c) != std::string_view::npos) out += '\\';
        out += c;
    }
    if (quoted) out += '"';
    // The whole value is then a desktop-entry string, where a backslash is written twice.
    std::string value;
    for (char c : out) {
        if (c == '\n') {
            value += "\\n";
            continue;
        }
        if (c == '\\') value += '\\';
        value += c;
    }
    return value;
}

std::string autostartEntry(const std::filesystem::path& binary, bool headless) {
    std::string exec = quoteExecArgument(binary.string());
    if (headless) exec += " --headless";
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Lumora\n"
           "Comment=Display control agent\n"
           "Exec=" +
           exec +
           "\n"
           "Terminal=false\n"
           "NoDisplay=true\n"
           "X-GNOME-Autostart-enabled=true\n";
}

}  // namespace lumora::app
