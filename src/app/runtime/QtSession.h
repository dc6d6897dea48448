#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "log/Log.h"
#include "platform/Session.h"
#include "runtime/AppPaths.h"

namespace lumora::app {

// The session of the running program. On Linux the login item is the packaged systemd user
// unit, enabled for the graphical session, where a systemd user manager runs the session and
// the unit is installed: the manager then restarts the agent when it ends with a failure (the
// display server went away). Elsewhere it is the XDG autostart entry: switching it on writes
// the entry, switching it off removes it.
class QtSession final : public Session {
  public:
    struct Launch {
        std::filesystem::path binary;  // absolute path of the program to start at login
        bool headless = false;         // start it with --headless
    };

    // `log` (optional) hears why the user's switch of the login item did not take.
    QtSession(AppPaths paths, Launch launch, Log* log = nullptr);

    // "dev" when the build carries no version.
    [[nodiscard]] std::string version() const override;
    [[nodiscard]] std::filesystem::path statusFile() const override;
    // Whether the start-at-login file existed when the session was built.
    [[nodiscard]] bool launchAgentInstalled() const override;
    // The file exists and does not hide itself (Hidden=true is how users switch entries off).
    [[nodiscard]] bool loginItemEnabled() const override;
    bool setLoginItemEnabled(bool enabled) override;
    // The first-launch registration: quiet, whatever the outcome.
    bool registerLoginItem() override;

    // The running binary, as the kernel knows it (symlinks resolved).
    static std::filesystem::path runningBinary();
    // The installed user unit when a systemd user manager runs this session; nothing when the
    // autostart entry is the login item.
    [[nodiscard]] std::optional<std::filesystem::path> userUnit() const;

  private:
    AppPaths paths_;
    Launch launch_;
    Log* log_ = nullptr;
    bool launchAgentAtStart_ = false;
};

}  // namespace lumora::app
