#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "support/TestSupport.h"

namespace lumora::lx::test {

// A private temporary folder laid out like /sys, removed again at the end.
class SysfsTree {
  public:
    [[nodiscard]] const std::filesystem::path& root() const { return dir_.path(); }

    void file(const std::string& path, const std::string& text) {
        const auto at = root_ / path;
        std::filesystem::create_directories(at.parent_path());
        std::ofstream(at) << text;
    }
    void link(const std::string& path, const std::filesystem::path& target) {
        const auto at = root_ / path;
        std::filesystem::create_directories(at.parent_path());
        std::filesystem::create_symlink(target, at);
    }

    // A graphics card at devices/<gpu> and its DRM node class/drm/<card>.
    void card(const std::string& card, const std::string& gpu) {
        std::filesystem::create_directories(root_ / "devices" / gpu);
        link("class/drm/" + card + "/device", root_ / "devices" / gpu);
    }
    // A connector with its status and, when bus >= 0, its "ddc" link.
    void connector(const std::string& name, const std::string& status, int bus) {
        file("class/drm/" + name + "/status", status + "\n");
        if (bus >= 0) link("class/drm/" + name + "/ddc", "../../../i2c-" + std::to_string(bus));
    }
    // An I2C adapter below the device `parent` (a path under devices/).
    void adapter(int bus, const std::string& name, const std::string& parent) {
        const auto dir = "devices/" + parent + "/i2c-" + std::to_string(bus);
        file(dir + "/name", name + "\n");
        link("bus/i2c/devices/i2c-" + std::to_string(bus), root_ / dir);
    }

  private:
    lumora::test::TempDir dir_;
    const std::filesystem::path& root_ = dir_.path();
};

}  // namespace lumora::lx::test
