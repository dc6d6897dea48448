#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace lumora::mac {

// The per-user launch agent that starts the application at login when installed by hand:
// HOME/Library/LaunchAgents/<bundle identifier>.plist.
std::filesystem::path launchAgentFile(const std::filesystem::path& home,
                                      const std::string& bundleIdentifier);

// The login-item service's status values for the application itself.
enum class LoginItemStatus : std::int64_t {
    notRegistered = 0,
    enabled = 1,
    requiresApproval = 2,  // registered, waiting for the user in the system settings
    notFound = 3,
};

// Whether the switch shows "on": only a registration the system will act on. One waiting for
// approval does not start the application yet; an unknown value counts as off.
bool loginItemOn(std::int64_t status);

}  // namespace lumora::mac
