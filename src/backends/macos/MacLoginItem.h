#pragma once

#include <filesystem>
#include <string>

namespace lumora::mac {

// Start at login through the login-item service of the application bundle itself. A launch
// agent installed by hand does the same job; while it exists, the first-launch registration
// is left out so that the application does not start twice.
class MacLoginItem {
  public:
    MacLoginItem(std::filesystem::path home, std::string bundleIdentifier);

    [[nodiscard]] bool launchAgentInstalled() const;
    // Registered and acting: a registration still waiting for approval counts as off.
    [[nodiscard]] bool enabled() const;
    // Registered, and waiting for the user to approve it in the system settings.
    [[nodiscard]] bool awaitingApproval() const;
    // False when the service refuses (not a bundle, a sandbox, a management profile) or the
    // registration waits for the user's approval; `why` then says which, in words for the log.
    bool setEnabled(bool enabled, std::string* why = nullptr);
    // Opens the system settings' Login Items, where a registration waiting for approval is.
    static void openApprovalSettings();
    // The first-launch registration: nothing (false) while a launch agent is installed.
    bool registerAtFirstLaunch();

  private:
    std::filesystem::path launchAgent_;
};

}  // namespace lumora::mac
