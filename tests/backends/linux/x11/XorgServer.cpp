#include "XorgServer.h"

#include <poll.h>

namespace lumora::lx::test {

namespace {

constexpr const char* kXorg = "/usr/lib/xorg/Xorg";
constexpr const char* kDummyDriver = "/usr/lib/xorg/modules/drivers/dummy_drv.so";
// The dummy server is up in well under a second; this is for a loaded machine.
constexpr int kStartTimeoutMs = 10000;
constexpr std::size_t kLogTail = 2000;

}  // namespace

std::unique_ptr<XorgServer> XorgServer::start(std::string& whyNot) {
    if (access(kXorg, X_OK) != 0 || access(kDummyDriver, R_OK) != 0) {
        whyNot =
            "Xorg or its dummy driver is not installed (xserver-xorg-core, "
            "xserver-xorg-video-dummy)";
        return nullptr;
    }
    std::unique_ptr<XorgServer> server(new XorgServer);
    int ready[2];
    if (pipe(ready) != 0) {
        whyNot = "no pipe";
        return nullptr;
    }
    fcntl(ready[0], F_SETFD, FD_CLOEXEC);  // the server inherits the write end only
    const std::string log = (server->dir_ / "Xorg.log").string();
    server->xorg_.emplace(
        std::vector<std::string>{kXorg, "-displayfd", std::to_string(ready[1]), "-config",
                                 LUMORA_XORG_DUMMY_CONFIG, "-noreset", "-nolisten", "tcp",
                                 "-extension", "GLX", "-logfile", log},
        std::vector<std::string>{}, server->dir_ / "Xorg.out");
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
        const std::string text = lumora::test::readFile(log);
        whyNot = "Xorg with the dummy driver did not start (it needs root): " +
                 text.substr(text.size() > kLogTail ? text.size() - kLogTail : 0);
        return nullptr;
    }
    number.pop_back();
    server->display_ = ":" + number;
    return server;
}

ToolResult runTool(const std::vector<std::string>& argv, const std::string& display) {
    std::string command = "env -i DISPLAY=" + display + " PATH=/usr/bin:/bin";
    for (const auto& word : argv)
        command += " " + wltest::shellQuoted(word);
    return wltest::runCommand(command);
}

}  // namespace lumora::lx::test
