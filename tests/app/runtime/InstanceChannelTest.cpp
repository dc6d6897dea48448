#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RuntimeTestSupport.h"
#include "runtime/InstanceChannel.h"
#include "support/TestSupport.h"

namespace lumora::app {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

const char* const kUrl = "lumora://brightness?display=main&value=70";

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

// A raw client: sends `bytes`, then reads until the agent hangs up or `limit` passes.
std::string rawExchange(const std::string& path, const std::string& bytes,
                        std::chrono::milliseconds limit, std::size_t expectBytes) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = addressOf(path);
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return "<no connection>";
    }
    (void)::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    std::string reply;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (reply.size() < expectBytes && std::chrono::steady_clock::now() < deadline) {
        pollfd wait{fd, POLLIN, 0};
        if (::poll(&wait, 1, 10) <= 0) continue;
        char chunk[64];
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n <= 0) {
            reply += "<closed>";
            break;
        }
        reply.append(chunk, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return reply;
}

class InstanceChannelTest : public test::QtAppTest {
  protected:
    test::TempDir runtimeDir;  // stands for XDG_RUNTIME_DIR
    std::string socket = (runtimeDir / "lumora.socket").string();
};

TEST_F(InstanceChannelTest, TheSecondStartFindsTheAgentAndWaitsUntilItsCommandIsDone) {
    const fs::path status = runtimeDir / "status.json";
    std::vector<std::string> handled;
    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen([&](const std::string& url) {
        handled.push_back(url);
        std::this_thread::sleep_for(50ms);  // a command that takes a while
        test::writeFile(status, "{\"ok\": true}");
    }),
              InstanceChannel::Listen::listening);

    InstanceChannel second(socket);
    EXPECT_EQ(second.listen([](const std::string&) {}), InstanceChannel::Listen::anotherInstance);

    struct Outcome {
        std::optional<bool> result;
        bool statusWritten = false;
    };
    Outcome outcome = onWorker([&] {
        Outcome o;
        o.result = InstanceChannel::handOver(socket, kUrl);
        o.statusWritten = fs::exists(status);  // looked at the moment handOver returns
        return o;
    });
    EXPECT_EQ(outcome.result, std::optional<bool>(true));
    EXPECT_TRUE(outcome.statusWritten);
    EXPECT_EQ(handled, std::vector<std::string>{kUrl});
    EXPECT_TRUE(onWorker([&] { return InstanceChannel::ping(socket); }));
}

TEST_F(InstanceChannelTest, NobodyListeningMeansStartAsTheAgent) {
    EXPECT_EQ(InstanceChannel::handOver(socket, kUrl, 200ms), std::nullopt);
    EXPECT_FALSE(InstanceChannel::ping(socket, 200ms));
}

TEST_F(InstanceChannelTest, ASocketLeftByACrashedAgentDoesNotBlockTheNextStart) {
    {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        const sockaddr_un address = addressOf(socket);
        ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(::listen(fd, 1), 0);
        ::close(fd);  // dies without cleaning up
    }
    ASSERT_TRUE(fs::exists(socket));
    EXPECT_EQ(InstanceChannel::handOver(socket, kUrl, 200ms), std::nullopt);

    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen([](const std::string&) {}), InstanceChannel::Listen::listening);
    EXPECT_TRUE(onWorker([&] { return InstanceChannel::ping(socket); }));
}

TEST_F(InstanceChannelTest, RequestsAreLinesAndGarbageIsRefused) {
    std::vector<std::string> handled;
    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen([&](const std::string& url) { handled.push_back(url); }),
              InstanceChannel::Listen::listening);

    EXPECT_EQ(onWorker([&] {
                  return rawExchange(socket, "ping\r\nbogus\nurl lumora://status\n", 5s, 16);
              }),
              "pong\nerror\ndone\n");
    EXPECT_EQ(handled, std::vector<std::string>{"lumora://status"});

    // A line longer than any request: the connection is dropped, the agent goes on.
    const std::string flood(InstanceChannel::kMaxLineBytes + 100, 'x');
    EXPECT_EQ(onWorker([&] { return rawExchange(socket, flood, 5s, 1); }), "<closed>");
    EXPECT_TRUE(onWorker([&] { return InstanceChannel::ping(socket); }));
    EXPECT_EQ(handled.size(), 1u);
}

TEST_F(InstanceChannelTest, AnAgentThatDoesNotFinishInTimeIsNotDone) {
    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen([](const std::string&) { std::this_thread::sleep_for(300ms); }),
              InstanceChannel::Listen::listening);
    EXPECT_EQ(onWorker([&] { return InstanceChannel::handOver(socket, kUrl, 50ms); }),
              std::optional<bool>(false));
    // A URL that would split into two requests is never sent.
    EXPECT_EQ(onWorker([&] { return InstanceChannel::handOver(socket, "lumora://a\nping"); }),
              std::optional<bool>(false));
}

TEST_F(InstanceChannelTest, AStoppedAgentLeavesNothingBehind) {
    {
        InstanceChannel agent(socket);
        ASSERT_EQ(agent.listen([](const std::string&) {}), InstanceChannel::Listen::listening);
        ASSERT_TRUE(fs::exists(socket));
        struct stat info {};
        ASSERT_EQ(::stat(socket.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0700u) << "only this user may connect";
    }
    EXPECT_FALSE(fs::exists(socket));
    EXPECT_FALSE(InstanceChannel::ping(socket, 200ms));
    InstanceChannel next(socket);
    EXPECT_EQ(next.listen([](const std::string&) {}), InstanceChannel::Listen::listening);
}

TEST_F(InstanceChannelTest, AnotherUsersConnectionIsDroppedUnanswered) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root to connect as another user";
    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen([](const std::string&) {}), InstanceChannel::Listen::listening);
    // Let the stranger reach the socket at all; the agent must still refuse it.
    ASSERT_EQ(::chmod(socket.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(runtimeDir.path().c_str(), 0755), 0);

    constexpr uid_t kNobody = 65534;
    const sockaddr_un address = addressOf(socket);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Only async-signal-safe calls in the child. Exit 0: dropped; 1: answered; 2: no test.
        ::alarm(5);
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) ::_exit(2);
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            ::_exit(2);
        }
        const char ping[] = "ping\n";
        (void)::send(fd, ping, sizeof ping - 1, MSG_NOSIGNAL);
        char reply[8];
        const ssize_t n = ::read(fd, reply, sizeof reply);
        ::_exit(n > 0 ? 1 : 0);
    }
    int status = -1;
    ASSERT_TRUE(spinUntil([&] { return ::waitpid(child, &status, WNOHANG) == child; }));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(onWorker([&] { return InstanceChannel::ping(socket); }));
}

}  // namespace
}  // namespace lumora::app
