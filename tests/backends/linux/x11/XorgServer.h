#pragma once

#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

namespace lumora::lx::test {

// A private Xorg with the dummy driver on a display number it picks itself, with its log in a
// temporary folder. Stopped (and the folder removed) when destroyed.
class XorgServer {
  public:
    // Nothing, with the reason in `whyNot`, when Xorg or the dummy driver is missing or the
    // server does not come up.
    static std::unique_ptr<XorgServer> start(std::string& whyNot);
    ~XorgServer();
    XorgServer(const XorgServer&) = delete;
    XorgServer& operator=(const XorgServer&) = delete;

    [[nodiscard]] const std::string& display() const { return display_; }
    // Stops the server now, as if it crashed.
    void kill();

  private:
    XorgServer(pid_t pid, std::string display, std::string folder);

    pid_t pid_;
    std::string display_;
    std::string folder_;
};

struct ToolResult {
    int exitCode = -1;
    std::string output;  // standard output
};

// Runs an X client (xrandr, xdotool, ...) against `display` and waits for it.
ToolResult runTool(const std::vector<std::string>& argv, const std::string& display);

}  // namespace lumora::lx::test
