#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumora::app {

// lumora [--simulate[=WORLD.json]] [--sim-state=STATE.json] [--headless] [--preview] [--list]
//        [--render-panel=PANEL.png] [lumora://URL]
struct CommandLine {
    bool simulate = false;
    std::optional<std::filesystem::path> worldFile;  // with --simulate=FILE
    std::optional<std::filesystem::path> stateFile;  // --sim-state=FILE
    bool headless = false;
    bool preview = false;
    bool list = false;
    // Draws the menu panel into this PNG and exits: the stored settings on a fresh machine, the
    // monitors read over DDC/CI as the agent reads them at start.
    std::optional<std::filesystem::path> renderPanel;
    std::optional<std::string> url;  // a lumora:// URL to hand to the agent
    std::string error;               // non-empty when the arguments cannot be used
};

CommandLine parseCommandLine(const std::vector<std::string>& arguments);

inline constexpr const char* kUsage =
    "usage: lumora [--simulate[=WORLD.json]] [--sim-state=STATE.json] [--headless] [--preview] "
    "[--list] [--render-panel=PANEL.png] [lumora://COMMAND?KEY=VALUE...]";

}  // namespace lumora::app
