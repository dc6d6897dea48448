#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backends/linux/wayland/support/ServerProcess.h"

namespace lumora::lx::test {

// A private Xorg with the dummy driver on a display number it picks itself, with its log in a
// temporary folder. Stopped (and the folder removed) when destroyed.
class XorgServer {
  public:
    // Nothing, with the reason in `whyNot`, when Xorg or the dummy driver is missing or the
    // server does not come up.
    static std::unique_ptr<XorgServer> start(std::string& whyNot);

    [[nodiscard]] const std::string& display() const { return display_; }
    // Stops the server now, as if it crashed.
    void kill() { xorg_.reset(); }

  private:
    XorgServer() = default;

    wltest::TempDir dir_;
    std::optional<wltest::ChildProcess> xorg_;  // stopped before its folder goes
    std::string display_;
};

using ToolResult = wltest::CommandResult;

// Runs an X client (xrandr, xdotool, ...) against `display` and waits for it.
ToolResult runTool(const std::vector<std::string>& argv, const std::string& display);

}  // namespace lumora::lx::test
