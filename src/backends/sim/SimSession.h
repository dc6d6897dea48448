#pragma once

#include <filesystem>
#include <string>

#include "platform/Session.h"

namespace lumora::sim {

// The session of the simulated machine, laid out as on Linux under a given home folder:
// the status file in ~/.local/state/lumora, the autostart file in ~/.config/autostart.
class SimSession final : public Session {
  public:
    // An empty version means the build carries none.
    explicit SimSession(std::filesystem::path home, std::string version = {});

    [[nodiscard]] std::string version() const override;
    [[nodiscard]] std::filesystem::path statusFile() const override;
    [[nodiscard]] bool launchAgentInstalled() const override;

    [[nodiscard]] const std::filesystem::path& home() const { return home_; }
    [[nodiscard]] std::filesystem::path launchAgentFile() const;

  private:
    std::filesystem::path home_;
    std::string version_;
};

}  // namespace lumora::sim
