#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumora::app {

// lumora [OPTION...] [COMMAND [DISPLAY] [VALUE...] | lumora://URL]; helpText() lists them all.
struct CommandLine {
    bool simulate = false;
    std::optional<std::filesystem::path> worldFile;  // with --simulate=FILE
    std::optional<std::filesystem::path> stateFile;  // --sim-state=FILE
    bool headless = false;
    bool preview = false;
    bool list = false;
    bool json = false;  // --list as one JSON document
    // Draws the menu panel into this PNG and exits: the stored settings on a fresh machine, the
    // monitors read over DDC/CI as the agent reads them at start.
    std::optional<std::filesystem::path> renderPanel;
    // A lumora:// URL to hand to the agent, given as it is or made from a short command.
    std::optional<std::string> url;
    bool printStatus = false;  // print the status file once the command is done
    bool help = false;         // these two win over everything else, errors included
    bool version = false;
    std::string error;  // non-empty when the arguments cannot be used
};

CommandLine parseCommandLine(const std::vector<std::string>& arguments);

// `lumora --help`: usage, every option and every command the agent knows with its keys, one
// line each.
std::string helpText();

inline constexpr const char* kUsage =
    "usage: lumora [--simulate[=WORLD.json]] [--sim-state=STATE.json] [--headless] [--preview] "
    "[--list [--json]] [--render-panel=PANEL.png] [--print-status] [--help] [--version] "
    "[COMMAND [DISPLAY] [VALUE...] | lumora://COMMAND?KEY=VALUE...]";

}  // namespace lumora::app
