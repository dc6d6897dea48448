#include "runtime/AppPaths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>
#include <vector>

namespace lumora::app {

namespace {

namespace fs = std::filesystem;

// Where the account database has nothing to say either.
const char* const kLastResortHome = "/tmp";
// Enough for any passwd entry this program meets; getpwuid_r says when it is not.
constexpr std::size_t kPasswdBufferSize = 16384;

std::optional<fs::path> absoluteVariable(const AppPaths::Environment& environment,
                                         const std::string& name) {
    auto value = environment(name);
    // The XDG base-directory rules: an empty or relative value is invalid and ignored.
    if (!value || value->empty() || (*value)[0] != '/') return std::nullopt;
    return fs::path(*value);
}

std::optional<fs::path> accountHome(unsigned uid) {
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(kPasswdBufferSize);
    if (getpwuid_r(static_cast<uid_t>(uid), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') {
        return fs::path(found->pw_dir);
    }
    return std::nullopt;
}

fs::path homeOf(const AppPaths::Environment& environment, unsigned uid) {
    if (auto home = absoluteVariable(environment, "HOME")) return *home;
    return accountHome(uid).value_or(fs::path(kLastResortHome));
}

}  // namespace

AppPaths AppPaths::fromEnvironment(const Environment& environment, unsigned uid) {
    AppPaths paths;
    paths.home = homeOf(environment, uid);
    const std::string user = std::to_string(uid);
#if defined(__APPLE__)
    const fs::path library = paths.home / "Library";
    paths.logFile = library / "Logs" / "Lumora.log";
    paths.statusFile = library / "Application Support" / "Lumora" / "status.json";
    paths.autostartFile = library / "LaunchAgents" / (std::string(kBundleIdentifier) + ".plist");
    // The system's defaults ignore HOME. A run in a home of its own (the tests, say) keeps its
    // settings in a file in that home, away from the account's real defaults.
    if (paths.home != accountHome(uid)) {
        paths.settingsFolder = library / "Application Support" / "Lumora";
        paths.settingsFile = paths.settingsFolder / "Lumora.conf";
    }
    // The per-user temporary folder; the socket name must stay short (about 100 bytes).
    const fs::path temporary = absoluteVariable(environment, "TMPDIR").value_or("/tmp");
    paths.instanceSocket = (temporary / ("lumora-" + user)).string();
#else
    const fs::path state =
        absoluteVariable(environment, "XDG_STATE_HOME").value_or(paths.home / ".local" / "state");
    const fs::path config =
        absoluteVariable(environment, "XDG_CONFIG_HOME").value_or(paths.home / ".config");
    paths.logFile = state / "lumora" / "Lumora.log";
    paths.statusFile = state / "lumora" / "status.json";
    paths.settingsFolder = config / "Lumora";
    paths.settingsFile = paths.settingsFolder / "Lumora.conf";
    paths.autostartFile = config / "autostart" / "lumora.desktop";
    const fs::path data =
        absoluteVariable(environment, "XDG_DATA_HOME").value_or(paths.home / ".local" / "share");
    paths.userUnitFolders = {config / "systemd" / "user", data / "systemd" / "user",
                             "/etc/systemd/user", "/usr/local/lib/systemd/user",
                             "/usr/lib/systemd/user"};
    paths.userUnitLink =
        config / "systemd" / "user" / "graphical-session.target.wants" / kUserUnitName;
    if (auto runtime = absoluteVariable(environment, "XDG_RUNTIME_DIR")) {
        paths.instanceSocket = (*runtime / "lumora.socket").string();
        paths.systemdRuntimeFolder = *runtime / "systemd";
    } else {
        paths.instanceSocket = "/tmp/lumora-" + user;
    }
#endif
    return paths;
}

AppPaths AppPaths::forThisProcess() {
    AppPaths paths = fromEnvironment(
        [](const std::string& name) -> std::optional<std::string> {
            const char* value = std::getenv(name.c_str());
            if (value == nullptr) return std::nullopt;
            return std::string(value);
        },
        static_cast<unsigned>(getuid()));
    (void)paths.createLogFolder();  // without it the log still echoes to standard output
    return paths;
}

bool AppPaths::createLogFolder() const {
    std::error_code ec;
    fs::create_directories(logFile.parent_path(), ec);
    return fs::is_directory(logFile.parent_path(), ec);
}

}  // namespace lumora::app
