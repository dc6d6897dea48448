#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumora::app {

// Every file location of the program, derived once from the environment at start, so that a
// test which points HOME and the XDG variables at a temporary folder sees every file written.
struct AppPaths {
    // Looks up one environment variable; nothing when it is unset.
    using Environment = std::function<std::optional<std::string>(const std::string& name)>;

    std::filesystem::path home;
    std::filesystem::path logFile;
    std::filesystem::path statusFile;
    // The settings store's folder and file; both empty where the platform keeps the settings
    // itself (the user defaults on macOS, unless HOME points away from the account's home).
    std::filesystem::path settingsFolder;
    std::filesystem::path settingsFile;
    // The start-at-login file (autostart entry; the launch agent on macOS).
    std::filesystem::path autostartFile;
    // Linux under a systemd user manager: the folder it makes while it runs, the folders it
    // looks for user units in (first wins), and the link that starts the agent's unit with
    // the graphical session.
    std::filesystem::path systemdRuntimeFolder;
    std::vector<std::filesystem::path> userUnitFolders;
    std::filesystem::path userUnitLink;
    // The per-user local socket of the running agent.
    std::string instanceSocket;

    // `uid` names the per-user fallbacks (no HOME, no XDG_RUNTIME_DIR).
    static AppPaths fromEnvironment(const Environment& environment, unsigned uid);
    // The paths of this process, with the log folder created (the log expects it).
    static AppPaths forThisProcess();

    // Creates the log file's folder; false when it cannot be created.
    [[nodiscard]] bool createLogFolder() const;
};

// The systemd user unit the Linux package installs.
inline constexpr const char* kUserUnitName = "lumora.service";

// The bundle identifier on macOS: the user-defaults domain and the launch agent's name.
inline constexpr const char* kBundleIdentifier = "org.lumora.Lumora";

}  // namespace lumora::app
