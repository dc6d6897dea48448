#pragma once

// Runs the built program as a user would: in a temporary home of its own, as a background
// agent or as a short-lived command, and reads back the files it writes.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <unistd.h>
#include <atomic>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "runtime/InstanceChannel.h"
#include "support/TestSupport.h"

extern char** environ;

namespace lumora::test {

using namespace std::chrono_literals;

// The machine may be slow and busy (sanitizers, parallel builds): waits are generous, and no
// test asserts speed.
inline constexpr auto kWaitLimit = 60s;
inline constexpr auto kPollInterval = 20ms;

// Polls `done` until it holds; false when `limit` passes first.
inline bool eventually(const std::function<bool()>& done,
                       std::chrono::milliseconds limit = kWaitLimit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kPollInterval);
    }
    return true;
}

// A file read as JSON; nothing while it is absent or half written.
inline std::optional<nlohmann::json> readJson(const std::filesystem::path& file) {
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) return std::nullopt;
    auto value = nlohmann::json::parse(readFile(file), nullptr, false);
    if (value.is_discarded()) return std::nullopt;
    return value;
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// The entry of a JSON display array with this id; null when there is none.
inline nlohmann::json displayWithId(const nlohmann::json& document, int id) {
    if (!document.contains("displays")) return nullptr;
    for (const auto& display : document["displays"]) {
        if (display.value("id", -1) == id) return display;
    }
    return nullptr;
}

// A home folder with the XDG folders inside it: everything the program writes lands here.
class Home {
  public:
    Home() {
        for (const char* folder : {"config", "state", "data", "cache", "run"}) {
            std::filesystem::create_directories(dir_ / folder);
        }
        // Qt insists on a private runtime folder.
        ::chmod((dir_ / "run").c_str(), 0700);
        variables_ = {{"HOME", dir_.path().string()},
                      {"XDG_CONFIG_HOME", (dir_ / "config").string()},
                      {"XDG_STATE_HOME", (dir_ / "state").string()},
                      {"XDG_DATA_HOME", (dir_ / "data").string()},
                      {"XDG_CACHE_HOME", (dir_ / "cache").string()},
                      {"XDG_RUNTIME_DIR", (dir_ / "run").string()},
                      // macOS puts the agent's socket in the per-user temporary folder.
                      {"TMPDIR", (dir_ / "run").string()}};
    }

    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return dir_ / name;
    }
#if defined(__APPLE__)
    [[nodiscard]] std::filesystem::path statusFile() const {
        return library() / "Application Support" / "Lumora" / "status.json";
    }
    [[nodiscard]] std::filesystem::path logFile() const {
        return library() / "Logs" / "Lumora.log";
    }
    // A home of its own keeps the settings in a file, away from the runner's real defaults.
    [[nodiscard]] std::filesystem::path settingsFile() const {
        return library() / "Application Support" / "Lumora" / "Lumora.conf";
    }
    [[nodiscard]] std::filesystem::path autostartFile() const {
        return library() / "LaunchAgents" / "org.lumora.Lumora.plist";
    }
    [[nodiscard]] std::string socket() const {
        return (dir_ / "run" / ("lumora-" + std::to_string(::getuid()))).string();
    }
#else
    [[nodiscard]] std::filesystem::path statusFile() const {
        return dir_ / "state" / "lumora" / "status.json";
    }
    [[nodiscard]] std::filesystem::path logFile() const {
        return dir_ / "state" / "lumora" / "Lumora.log";
    }
    [[nodiscard]] std::filesystem::path settingsFile() const {
        return dir_ / "config" / "Lumora" / "Lumora.conf";
    }
    [[nodiscard]] std::filesystem::path autostartFile() const {
        return dir_ / "config" / "autostart" / "lumora.desktop";
    }
    [[nodiscard]] std::string socket() const {
        return (dir_ / "run" / "lumora.socket").string();
    }
#endif

    // The agent of this home answers on its socket.
    [[nodiscard]] bool agentAnswers() const {
        return app::InstanceChannel::ping(socket());
    }

    // This process's environment without any display server, with this home; `extra` on top.
    [[nodiscard]] std::vector<std::string> environment(
        const std::map<std::string, std::string>& extra = {}) const {
        std::map<std::string, std::string> all;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            std::string text = *entry;
            auto equals = text.find('=');
            if (equals == std::string::npos) continue;
            all[text.substr(0, equals)] = text.substr(equals + 1);
        }
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            all.erase(name);
        }
        for (const auto& [name, value] : variables_)
            all[name] = value;
        for (const auto& [name, value] : extra)
            all[name] = value;
        std::vector<std::string> out;
        for (const auto& [name, value] : all)
            out.push_back(name + "=" + value);
        return out;
    }

  private:
#if defined(__APPLE__)
    [[nodiscard]] std::filesystem::path library() const {
        return dir_ / "Library";
    }
#endif

    TempDir dir_;
    std::map<std::string, std::string> variables_;
};

// One run of `program` (the built one unless named), standard output and error into one file
// unless `errorsApart`. Killed if still running when the object goes, so that a failing test
// leaves nothing behind.
class Process {
  public:
    Process(const Home& home, const std::vector<std::string>& arguments,
            const std::map<std::string, std::string>& extraEnvironment = {},
            bool errorsApart = false, const std::string& program = LUMORA_BINARY)
        : output_(home / ("output-" + std::to_string(++counter_) + ".txt")),
          error_(errorsApart ? std::filesystem::path(output_.string() + ".err") : output_) {
        std::vector<std::string> argv{program};
        argv.insert(argv.end(), arguments.begin(), arguments.end());
        const std::vector<std::string> env = home.environment(extraEnvironment);
        const auto pointers = [](const std::vector<std::string>& strings) {
            std::vector<char*> out;
            for (const auto& s : strings)
                out.push_back(const_cast<char*>(s.c_str()));
            out.push_back(nullptr);
            return out;
        };
        std::vector<char*> argvPointers = pointers(argv);
        std::vector<char*> envPointers = pointers(env);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output_.c_str(), flags, 0600);
        if (errorsApart) {
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, error_.c_str(), flags, 0600);
        } else {
            posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
        }
        if (posix_spawn(&pid_, argvPointers[0], &actions, nullptr, argvPointers.data(),
                        envPointers.data()) != 0) {
            pid_ = -1;
        }
        posix_spawn_file_actions_destroy(&actions);
    }

    ~Process() {
        if (running()) {
            ::kill(pid_, SIGKILL);
            int raw = 0;
            ::waitpid(pid_, &raw, 0);
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    [[nodiscard]] bool started() const { return pid_ > 0; }
    [[nodiscard]] pid_t pid() const { return pid_; }
    [[nodiscard]] bool running() const { return started() && !status_; }

    // The exit status once the process has ended by itself; -1 for a death by signal.
    // Nothing when it still runs after `limit`.
    std::optional<int> waitExit(std::chrono::milliseconds limit = kWaitLimit) {
        if (started()) eventually([this] { return !alive(); }, limit);
        return status_;
    }

    // Whether it is still alive now (reaps it when it has ended).
    bool alive() {
        if (!running()) return false;
        int raw = 0;
        if (::waitpid(pid_, &raw, WNOHANG) != pid_) return true;
        status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        return false;
    }

    void signal(int number) const {
        if (running()) ::kill(pid_, number);
    }

    [[nodiscard]] std::string output() const { return readFile(output_); }
    // Standard error when it was kept apart; otherwise the same as output().
    [[nodiscard]] std::string error() const { return readFile(error_); }

  private:
    inline static std::atomic<int> counter_ = 0;  // output files of one home never clash
    std::filesystem::path output_;
    std::filesystem::path error_;
    pid_t pid_ = -1;
    std::optional<int> status_;
};

// Runs a short command to its end; the exit status, or nothing when it hung.
struct Finished {
    std::optional<int> status;
    std::string output;
    std::string error;  // apart from the output only when asked for
};
inline Finished runToEnd(const Home& home, const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& extraEnvironment = {},
                         bool errorsApart = false, const std::string& program = LUMORA_BINARY) {
    Process process(home, arguments, extraEnvironment, errorsApart, program);
    const auto status = process.waitExit();
    return {status, process.output(), errorsApart ? process.error() : ""};
}

// The agent on the built-in simulated machine (or --simulate=WORLD in `extra`), headless, in
// `home`, with its hardware state in home/sim-state.json; ready() once it answers.
class Agent {
  public:
    explicit Agent(const Home& home, std::vector<std::string> extra = {},
                   const std::map<std::string, std::string>& extraEnvironment = {})
        : home_(home),
          process_(home, arguments(home, std::move(extra)), extraEnvironment),
          ready_(process_.started() && eventually([&] { return home_.agentAnswers(); })) {}

    [[nodiscard]] bool ready() const { return ready_; }
    // The start's DDC scan has answered: commands now reach the monitors over DDC/CI.
    [[nodiscard]] bool ddcScanned() const {
        return eventually([&] { return contains(readFile(home_.logFile()), "DDC: "); });
    }
    Process& process() { return process_; }
    [[nodiscard]] std::filesystem::path stateFile() const { return home_ / "sim-state.json"; }
    [[nodiscard]] std::optional<nlohmann::json> state() const { return readJson(stateFile()); }

    // `lumora URL`, handed over to this agent; true when it exited 0.
    bool send(const std::string& url) const {
        auto run = runToEnd(home_, {url});
        EXPECT_EQ(run.status, 0) << url << "\n" << run.output;
        return run.status == 0;
    }

  private:
    static std::vector<std::string> arguments(const Home& home, std::vector<std::string> extra) {
        std::vector<std::string> out{"--simulate", "--headless",
                                     "--sim-state=" + (home / "sim-state.json").string()};
        out.insert(out.end(), extra.begin(), extra.end());
        return out;
    }

    const Home& home_;
    Process process_;
    bool ready_ = false;
};

}  // namespace lumora::test
