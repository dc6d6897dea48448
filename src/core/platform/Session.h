#pragma once

#include <filesystem>
#include <string>

namespace lumora {

// The user's session as the application sees it: what build runs and where its files go.
class Session {
  public:
    virtual ~Session() = default;

    // The short version string of the build; "dev" when the build carries none.
    [[nodiscard]] virtual std::string version() const = 0;
    // Where the status file lives. Its folder may not exist yet: the writer creates it.
    [[nodiscard]] virtual std::filesystem::path statusFile() const = 0;
    // Whether a start-at-login file installed by hand is present (it suppresses the
    // first-launch login-item registration).
    [[nodiscard]] virtual bool launchAgentInstalled() const = 0;

    // The start-at-login switch. A platform without one reports it off and refuses changes.
    [[nodiscard]] virtual bool loginItemEnabled() const { return false; }
    virtual bool setLoginItemEnabled(bool /*enabled*/) { return false; }
    // The first-launch registration; a failure is the caller's to ignore.
    virtual bool registerLoginItem() { return setLoginItemEnabled(true); }
};

}  // namespace lumora
