#include "CommandLine.h"

#include <algorithm>
#include <string_view>

#include "ShortCommand.h"
#include "model/CommandTable.h"

namespace lumora::app {

namespace {

constexpr std::string_view kSimulate = "--simulate";
constexpr std::string_view kSimState = "--sim-state=";
constexpr std::string_view kRenderPanel = "--render-panel=";
constexpr std::string_view kUrlScheme = "lumora://";

struct Option {
    std::string_view form;
    std::string_view meaning;
};

constexpr Option kOptions[] = {
    {"--simulate[=WORLD.json]", "the simulated machine: this world file, or a built-in one"},
    {"--sim-state=STATE.json", "with --simulate: keep the simulated hardware's state here"},
    {"--headless", "no tray icon and no windows"},
    {"--preview", "show the menu panel in a window for 15 s"},
    {"--render-panel=PANEL.png", "draw the menu panel into a PNG and exit"},
    {"--list", "print every display, its modes and DDC/CI values, and exit"},
    {"--json", "with --list: one JSON document"},
    {"--print-status", "after the command: print the status file (JSON)"},
    {"-h, --help", "this text"},
    {"--version", "the version"},
};

// The command's own column, wide enough for the longest short form.
constexpr std::size_t kCommandColumn = 44;
constexpr std::size_t kOptionColumn = 26;
// Two spaces at least between a form and its meaning, so that both read as columns.
constexpr std::size_t kGap = 2;

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size() + kGap), ' ');
    return text;
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine out;
    for (const std::string& arg : arguments) {
        if (arg == "--help" || arg == "-h") out.help = true;
        if (arg == "--version") out.version = true;
    }
    if (out.help || out.version) return out;

    std::vector<std::string> words;  // a short command, from its first word on
    for (const std::string& arg : arguments) {
        std::string_view a = arg;
        // After a short command's first word only options start with "--": "-5" is a value.
        const bool option = words.empty() ? a.starts_with('-') : a.starts_with("--");
        if (!option && (!words.empty() || !a.starts_with(kUrlScheme))) {
            words.push_back(arg);
        } else if (a == kSimulate) {
            out.simulate = true;
        } else if (a.starts_with(kSimulate) && a.size() > kSimulate.size() &&
                   a[kSimulate.size()] == '=') {
            out.simulate = true;
            auto file = a.substr(kSimulate.size() + 1);
            if (file.empty()) {
                out.error = "--simulate= needs a world file";
                return out;
            }
            out.worldFile = std::filesystem::path(std::string(file));
        } else if (a.starts_with(kSimState)) {
            auto file = a.substr(kSimState.size());
            if (file.empty()) {
                out.error = "--sim-state= needs a file";
                return out;
            }
            out.stateFile = std::filesystem::path(std::string(file));
        } else if (a.starts_with(kRenderPanel)) {
            auto file = a.substr(kRenderPanel.size());
            if (file.empty()) {
                out.error = "--render-panel= needs a file";
                return out;
            }
            out.renderPanel = std::filesystem::path(std::string(file));
        } else if (a == "--headless") {
            out.headless = true;
        } else if (a == "--preview") {
            out.preview = true;
        } else if (a == "--list") {
            out.list = true;
        } else if (a == "--json") {
            out.json = true;
        } else if (a == "--print-status") {
            out.printStatus = true;
        } else if (a.starts_with(kUrlScheme)) {
            if (out.url) {
                out.error = "only one command at a time";
                return out;
            }
            out.url = arg;
        } else {
            out.error = "unknown argument: " + arg;
            return out;
        }
    }
    if (!words.empty()) {
        if (out.url) {
            out.error = "only one command at a time";
            return out;
        }
        auto command = shortCommandUrl(words);
        if (!command.error.empty()) {
            out.error = command.error;
            return out;
        }
        out.url = command.url;
    }
    if (out.stateFile && !out.simulate) out.error = "--sim-state needs --simulate";
    // Both show the panel, which a headless agent never does.
    if (out.headless && (out.preview || out.renderPanel)) {
        out.error = "--headless shows no panel: drop --preview or --render-panel";
    }
    if (out.json && !out.list) out.error = "--json needs --list";
    if (out.list && out.url) out.error = "--list takes no command";
    if (out.printStatus && !out.url) out.error = "--print-status needs a command";
    return out;
}

std::string helpText() {
    std::string out = std::string(kUsage) + "\n\n";
    out +=
        "Runs the Lumora agent, or hands the command to the agent already running and exits 0\n"
        "when it was carried out, 1 with one line on standard error when it did nothing, and 2\n"
        "when the arguments cannot be used. With no agent running, the command starts one.\n\n"
        "options:\n";
    for (const Option& o : kOptions) {
        out += "  " + padded(std::string(o.form), kOptionColumn) + std::string(o.meaning) + "\n";
    }
    out += "\ncommands (short form, then the URL's keys: what it does):\n";
    for (const CommandSpec& c : commandTable()) {
        const std::string keys = c.keys.empty() ? "no keys" : std::string(c.keys);
        out += "  " + padded(shortCommandSynopsis(c.name), kCommandColumn) + keys + ": " +
               std::string(c.summary) + "\n";
    }
    out +=
        "\nThe display comes first and is part of its name, its id, main, builtin or cursor (the\n"
        "display under the pointer, also when left off; where the system does not tell where the\n"
        "pointer is, as on Wayland, the display last set in the panel or named by a command,\n"
        "else the main display): `lumora dim 3` dims display 3 to black,\n"
        "`lumora dim 3 40` to 40 %, `lumora brightness cursor 70` sets the display under the\n"
        "pointer. Words may be left off from the end only; KEY=VALUE sets any of the command's\n"
        "keys by name (`lumora virtual 1280x720 hidpi=0`). A value above 1 is a percentage.\n"
        "lumora://COMMAND?KEY=VALUE&... is the same command as a URL.\n";
    return out;
}

}  // namespace lumora::app
