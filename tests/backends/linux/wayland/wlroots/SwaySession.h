#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "backends/linux/wayland/support/ServerProcess.h"

namespace lumora::wltest {

// A headless sway in a private runtime folder. Sway refuses to run as root, so under root it
// runs as nobody, in a folder that user owns; root still reaches its sockets.
class SwaySession {
  public:
    SwaySession() {
        if (!installed("sway") || !installed("swaymsg")) {
            problem_ = "sway is not installed (Debian packages sway)";
            return;
        }
        const auto& dir = dir_.path();
        const std::string config = (dir / "config").string();
        std::ofstream(config) << "xwayland disable\n";
        std::vector<std::string> argv{"sway", "-c", config};
        if (geteuid() == 0) {
            if (chown(dir.c_str(), kNobody, kNobody) != 0 || chmod(dir.c_str(), 0700) != 0) {
                problem_ = "cannot hand the runtime folder to nobody";
                return;
            }
            argv.insert(argv.begin(),
                        {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
        }
        sway_.emplace(
            argv,
            std::vector<std::string>{"XDG_RUNTIME_DIR=" + dir.string(), "HOME=" + dir.string(),
                                     "WLR_BACKENDS=headless", "WLR_RENDERER=pixman",
                                     "WLR_LIBINPUT_NO_DEVICES=1", "-WAYLAND_DISPLAY", "-SWAYSOCK"},
            dir / "sway.log");
        const bool up = waitFor([this] { return findSockets(); }, PrivateBus::kStartSeconds);
        if (!up) problem_ = "sway did not start; see its log in " + dir.string();
    }

    // Empty when sway runs.
    [[nodiscard]] const std::string& problem() const { return problem_; }
    [[nodiscard]] const std::string& waylandSocket() const { return wayland_; }
    // Ends the compositor now.
    void kill() { sway_.reset(); }

    std::string swaymsg(const std::string& args) const {
        return commandOutput("swaymsg -s '" + ipc_ + "' " + args + " 2>&1");
    }

    // swaymsg -t get_outputs, by output name.
    nlohmann::json output(const std::string& name) const {
        const auto all = nlohmann::json::parse(swaymsg("-r -t get_outputs"), nullptr, false);
        if (all.is_array()) {
            for (const auto& o : all) {
                if (o.value("name", "") == name) return o;
            }
        }
        return nlohmann::json();
    }

  private:
    static constexpr uid_t kNobody = 65534;

    bool findSockets() {
        for (const auto& entry : std::filesystem::directory_iterator(dir_.path())) {
            const std::string name = entry.path().filename().string();
            if (!entry.is_socket()) continue;
            if (name.rfind("wayland-", 0) == 0) wayland_ = entry.path().string();
            if (name.rfind("sway-ipc.", 0) == 0) ipc_ = entry.path().string();
        }
        return !wayland_.empty() && !ipc_.empty();
    }

    TempDir dir_;
    std::optional<ChildProcess> sway_;
    std::string wayland_;
    std::string ipc_;
    std::string problem_;
};

}  // namespace lumora::wltest
