#pragma once

// Starting and stopping the servers the tests run against (Xorg, Mutter, sway, message buses):
// a private folder, a child process that is always stopped, commands, waiting for a condition.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/TestSupport.h"

extern char** environ;

namespace lumora::wltest {

using lumora::test::TempDir;

inline bool installed(const std::string& program) {
    for (const char* dir : {"/usr/bin", "/usr/local/bin", "/bin"}) {
        if (access((std::string(dir) + "/" + program).c_str(), X_OK) == 0) return true;
    }
    return false;
}

inline bool hasDbusmock() {
    static const bool has =
        std::system("/usr/bin/python3 -c 'import dbusmock' >/dev/null 2>&1") == 0;
    return has;
}

inline bool waitFor(const std::function<bool()>& condition, double seconds) {
    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::milliseconds(static_cast<int>(seconds * 1000));
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// A child in its own process group, with extra environment variables ("NAME=value"; "-NAME"
// leaves NAME out of what it inherits) and its output in a log file. It goes when the test
// program goes, however that ends; the destructor stops the whole group: SIGTERM, then
// SIGKILL after a grace period.
class ChildProcess {
  public:
    ChildProcess(std::vector<std::string> argv, const std::vector<std::string>& env,
                 const std::filesystem::path& log) {
        // env(1) takes its options before the assignments.
        std::vector<std::string> prefix = {"setpriv", "--pdeathsig", "KILL", "env"}, set;
        for (const auto& e : env) {
            if (e.starts_with('-'))
                prefix.insert(prefix.end(), {"-u", e.substr(1)});
            else
                set.push_back(e);
        }
        prefix.insert(prefix.end(), set.begin(), set.end());
        argv.insert(argv.begin(), prefix.begin(), prefix.end());
        std::vector<char*> args;
        for (auto& a : argv)
            args.push_back(a.data());
        args.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0644);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        posix_spawnattr_t attr;
        posix_spawnattr_init(&attr);
        posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP);
        if (posix_spawnp(&pid_, args[0], &actions, &attr, args.data(), environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attr);
    }
    ~ChildProcess() { stop(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void stop() {
        if (pid_ <= 0) return;
        kill(-pid_, SIGTERM);
        if (!waitFor([this] { return waitpid(pid_, nullptr, WNOHANG) == pid_; },
                     kStopGraceSeconds)) {
            kill(-pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        kill(-pid_, SIGKILL);  // helpers the child left in its group (swaybg)
        pid_ = -1;
    }

  private:
    static constexpr double kStopGraceSeconds = 3.0;
    pid_t pid_ = -1;
};

// A private message bus in a folder of its own.
class PrivateBus {
  public:
    PrivateBus() {
        if (!installed("dbus-daemon")) {
            problem_ = "dbus-daemon is not installed";
            return;
        }
        address_ = "unix:path=" + (dir_ / "bus").string();
        daemon_.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork",
                                                 "--address=" + address_},
                        std::vector<std::string>{}, dir_ / "dbus.log");
        if (!waitFor([&] { return std::filesystem::exists(dir_ / "bus"); }, kStartSeconds))
            problem_ = "dbus-daemon did not start";
    }

    // Empty when the bus runs.
    [[nodiscard]] const std::string& problem() const { return problem_; }
    [[nodiscard]] const std::string& address() const { return address_; }
    [[nodiscard]] const std::filesystem::path& dir() const { return dir_.path(); }

    static constexpr double kStartSeconds = 10.0;

  private:
    TempDir dir_;
    std::optional<ChildProcess> daemon_;
    std::string address_;
    std::string problem_;
};

struct CommandResult {
    int exitCode = -1;
    std::string output;  // standard output
};

inline CommandResult runCommand(const std::string& command) {
    CommandResult result;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return result;
    std::array<char, 4096> buffer{};
    for (std::size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        result.output.append(buffer.data(), n);
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

inline std::string commandOutput(const std::string& command) {
    return runCommand(command).output;
}

// `text` as one word of a shell command.
inline std::string shellQuoted(const std::string& text) {
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace lumora::wltest
