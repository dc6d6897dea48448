#include "XorgServer.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

extern char** environ;

namespace lumora::lx::test {

namespace {

constexpr const char* kXorg = "/usr/lib/xorg/Xorg";
constexpr const char* kDummyDriver = "/usr/lib/xorg/modules/drivers/dummy_drv.so";
// The dummy server is up in well under a second; this is for a loaded machine.
constexpr int kStartTimeoutMs = 10000;
constexpr auto kStopTimeout = std::chrono::seconds(3);

std::string readAll(int fd) {
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = read(fd, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(n));
    return text;
}

bool waitGone(pid_t pid, std::chrono::milliseconds timeout) {
    const auto until = std::chrono::steady_clock::now() + timeout;
    while (std::chrono::steady_clock::now() < until) {
        if (waitpid(pid, nullptr, WNOHANG) == pid) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace

std::unique_ptr<XorgServer> XorgServer::start(std::string& whyNot) {
    if (access(kXorg, X_OK) != 0 || access(kDummyDriver, R_OK) != 0) {
        whyNot =
            "Xorg or its dummy driver is not installed (xserver-xorg-core, "
            "xserver-xorg-video-dummy)";
        return nullptr;
    }
    char folderTemplate[] = "/tmp/lumora-xorg-XXXXXX";
    if (!mkdtemp(folderTemplate)) {
        whyNot = "no temporary folder";
        return nullptr;
    }
    const std::string folder = folderTemplate;
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) {
        whyNot = "no pipe";
        return nullptr;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        // The server goes when the test program goes, however it ends.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setsid();
        const int devNull = open("/dev/null", O_RDWR);
        dup2(devNull, STDIN_FILENO);
        dup2(devNull, STDOUT_FILENO);
        dup2(devNull, STDERR_FILENO);
        const int fd = dup(ready[1]);  // without close-on-exec
        const std::string fdText = std::to_string(fd);
        const std::string log = folder + "/Xorg.log";
        execl(kXorg, kXorg, "-displayfd", fdText.c_str(), "-config", LUMORA_XORG_DUMMY_CONFIG,
              "-noreset", "-nolisten", "tcp", "-extension", "GLX", "-logfile", log.c_str(),
              nullptr);
        _exit(127);
    }
    close(ready[1]);
    std::string number;
    pollfd p{ready[0], POLLIN, 0};
    while (number.find('\n') == std::string::npos && poll(&p, 1, kStartTimeoutMs) > 0) {
        char c = 0;
        if (read(ready[0], &c, 1) != 1) break;
        number.push_back(c);
    }
    close(ready[0]);
    if (number.find('\n') == std::string::npos) {
        ::kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        std::ifstream log(folder + "/Xorg.log");
        std::string tail((std::istreambuf_iterator<char>(log)), {});
        if (tail.size() > 2000) tail = tail.substr(tail.size() - 2000);
        whyNot = "Xorg with the dummy driver did not start (it needs root): " + tail;
        std::filesystem::remove_all(folder);
        return nullptr;
    }
    number.pop_back();
    return std::unique_ptr<XorgServer>(new XorgServer(pid, ":" + number, folder));
}

XorgServer::XorgServer(pid_t pid, std::string display, std::string folder)
    : pid_(pid), display_(std::move(display)), folder_(std::move(folder)) {}

XorgServer::~XorgServer() {
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void XorgServer::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    if (!waitGone(pid_, kStopTimeout)) {
        ::kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    pid_ = -1;
}

ToolResult runTool(const std::vector<std::string>& argv, const std::string& display) {
    std::vector<std::string> env = {"DISPLAY=" + display, "PATH=/usr/bin:/bin"};
    std::vector<char*> args, envp;
    for (const auto& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    for (const auto& e : env)
        envp.push_back(const_cast<char*>(e.c_str()));
    envp.push_back(nullptr);

    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    ToolResult result;
    if (spawned == 0) {
        result.output = readAll(out[0]);
        int status = 0;
        waitpid(pid, &status, 0);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    close(out[0]);
    return result;
}

}  // namespace lumora::lx::test
