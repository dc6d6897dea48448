#include "decode/ChildProcesses.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>

extern char** environ;

namespace lumora::mac {

namespace {

constexpr const char* kNullDevice = "/dev/null";

// Owns the spawn file actions for one call.
class FileActions {
  public:
    FileActions() { ok_ = posix_spawn_file_actions_init(&actions_) == 0; }
    ~FileActions() {
        if (ok_) posix_spawn_file_actions_destroy(&actions_);
    }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    // Standard output and standard error to the null device; the tools have nothing to say
    // that the agent would read.
    int silence() {
        if (!ok_) return ENOMEM;
        for (int fd : {STDOUT_FILENO, STDERR_FILENO}) {
            if (int rc = posix_spawn_file_actions_addopen(&actions_, fd, kNullDevice, O_WRONLY, 0))
                return rc;
        }
        return 0;
    }
    posix_spawn_file_actions_t* get() { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
    bool ok_ = false;
};

}  // namespace

ChildProcesses::Started ChildProcesses::spawn(const std::string& path,
                                              const std::vector<std::string>& arguments) {
    reap();
    std::vector<std::string> words;
    words.reserve(arguments.size() + 1);
    words.push_back(path);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    FileActions actions;
    int rc = actions.silence();
    pid_t pid = 0;
    if (rc == 0) rc = posix_spawn(&pid, path.c_str(), actions.get(), nullptr, argv.data(), environ);
    if (rc != 0) return {0, path + " failed: " + std::strerror(rc)};
    children_.push_back(pid);
    return {pid, {}};
}

bool ChildProcesses::running(pid_t pid) {
    if (pid <= 0 || std::find(children_.begin(), children_.end(), pid) == children_.end())
        return false;
    int status = 0;
    const pid_t done = waitpid(pid, &status, WNOHANG);
    if (done == 0) return true;
    // Ended (or already collected elsewhere): either way it no longer runs.
    std::erase(children_, pid);
    return false;
}

void ChildProcesses::reap() {
    std::erase_if(children_, [](pid_t pid) {
        int status = 0;
        return waitpid(pid, &status, WNOHANG) != 0;
    });
}

}  // namespace lumora::mac
