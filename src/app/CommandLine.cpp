#include "CommandLine.h"

#include <string_view>

namespace lumora::app {

namespace {
constexpr std::string_view kSimulate = "--simulate";
constexpr std::string_view kSimState = "--sim-state=";
constexpr std::string_view kRenderPanel = "--render-panel=";
constexpr std::string_view kUrlScheme = "lumora://";
}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine out;
    for (const std::string& arg : arguments) {
        std::string_view a = arg;
        if (a == kSimulate) {
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
        } else if (a.starts_with(kUrlScheme)) {
            if (out.url) {
                out.error = "only one URL at a time";
                return out;
            }
            out.url = arg;
        } else {
            out.error = "unknown argument: " + arg;
            return out;
        }
    }
    if (out.stateFile && !out.simulate) out.error = "--sim-state needs --simulate";
    // Both show the panel, which a headless agent never does.
    if (out.headless && (out.preview || out.renderPanel)) {
        out.error = "--headless shows no panel: drop --preview or --render-panel";
    }
    return out;
}

}  // namespace lumora::app
