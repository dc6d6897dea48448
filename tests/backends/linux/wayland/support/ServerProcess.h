#pragma once

// Starting and stopping the compositors the Wayland tests run against: a private folder, a
// child process that is always stopped, a command's output, waiting for a condition.

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
#include <memory>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace lumora::wltest {

// A fresh folder under /tmp, removed with everything in it.
class TempDir {
  public:
    TempDir() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "lumora-wl-XXXXXX").string();
        if (mkdtemp(pattern.data())) path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

inline bool installed(const std::string& program) {
    for (const char* dir : {"/usr/bin", "/usr/local/bin", "/bin"}) {
        if (access((std::string(dir) + "/" + program).c_str(), X_OK) == 0) return true;
    }
    return false;
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
// leaves NAME out of what it inherits) and its output in a log file. The destructor stops the whole
// group: SIGTERM, then SIGKILL after a grace period.
class ChildProcess {
  public:
    ChildProcess(const std::vector<std::string>& argv, const std::vector<std::string>& env,
                 const std::filesystem::path& log) {
        std::vector<std::string> environment;
        std::vector<std::string> dropped;
        for (const auto& e : env) {
            if (e.rfind('-', 0) == 0) {
                dropped.push_back(e.substr(1) + "=");
            } else {
                environment.push_back(e);
            }
        }
        for (char** e = environ; *e; ++e) {
            const std::string entry(*e);
            const bool drop = std::any_of(dropped.begin(), dropped.end(),
                                          [&](const auto& d) { return entry.rfind(d, 0) == 0; });
            if (!drop) environment.push_back(entry);  // later duplicates lose: ours come first
        }
        std::vector<char*> args, envp;
        for (const auto& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        for (const auto& e : environment)
            envp.push_back(const_cast<char*>(e.c_str()));
        envp.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log.c_str(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0644);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        posix_spawnattr_t attr;
        posix_spawnattr_init(&attr);
        posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP);
        posix_spawnattr_setpgroup(&attr, 0);
        if (posix_spawnp(&pid_, args[0], &actions, &attr, args.data(), envp.data()) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attr);
    }
    ~ChildProcess() { stop(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] bool started() const { return pid_ > 0; }
    void stop() {
        if (pid_ <= 0) return;
        kill(-pid_, SIGTERM);
        const bool ended = waitFor(
            [this] {
                int status = 0;
                return waitpid(pid_, &status, WNOHANG) == pid_;
            },
            kStopGraceSeconds);
        if (!ended) {
            kill(-pid_, SIGKILL);
            int status = 0;
            waitpid(pid_, &status, 0);
        } else {
            kill(-pid_, SIGKILL);  // helpers the child left in its group (swaybg)
        }
        pid_ = -1;
    }

  private:
    static constexpr double kStopGraceSeconds = 3.0;
    pid_t pid_ = -1;
};

// Standard output of a shell command.
inline std::string commandOutput(const std::string& command) {
    std::string out;
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    if (!pipe) return out;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = fread(buffer.data(), 1, buffer.size(), pipe.get())) > 0)
        out.append(buffer.data(), n);
    return out;
}

}  // namespace lumora::wltest
