#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTimer>
#include <cstring>
#include <map>
#include <optional>
#include <string>
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
    using Answer = InstanceChannel::Answer;
    test::TempDir runtimeDir;  // stands for XDG_RUNTIME_DIR
    std::string socket = (runtimeDir / "lumora.socket").string();
};

// A handler that carries nothing out: for tests about everything but commands.
void ignore(const InstanceChannel::Request&, const InstanceChannel::Reply&) {}

// Nobody listening, or only a socket left by a crashed agent: the caller starts as the agent,
// and when it stops it leaves nothing behind.
TEST_F(InstanceChannelTest, NoAgentOrACrashedOnesSocketMeansStartAsTheAgentAndAStopCleansUp) {
    EXPECT_EQ(InstanceChannel::handOver(socket, kUrl, false, 200ms), std::nullopt);
    EXPECT_FALSE(InstanceChannel::ping(socket, 200ms));
    {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        const sockaddr_un address = addressOf(socket);
        ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(::listen(fd, 1), 0);
        ::close(fd);  // dies without cleaning up
    }
    ASSERT_TRUE(fs::exists(socket));
    EXPECT_EQ(InstanceChannel::handOver(socket, kUrl, false, 200ms), std::nullopt);

    {
        InstanceChannel agent(socket);
        ASSERT_EQ(agent.listen(ignore), InstanceChannel::Listen::listening);
        EXPECT_TRUE(onWorker([&] { return InstanceChannel::ping(socket); }));
        struct stat info {};
        ASSERT_EQ(::stat(socket.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0700u) << "only this user may connect";
    }
    // A stopped agent leaves nothing behind.
    EXPECT_FALSE(fs::exists(socket));
    EXPECT_FALSE(InstanceChannel::ping(socket, 200ms));
    InstanceChannel next(socket);
    EXPECT_EQ(next.listen(ignore), InstanceChannel::Listen::listening);
}

// Requests are lines answered in order; the answers on the wire, byte for byte, and what the
// client makes of them.
TEST_F(InstanceChannelTest, RequestsAreLinesAndTheOutcomeAndStatusFileTravelBackInOrder) {
    const std::string status = "{\n  \"lid\": \"open\"\n}";
    std::map<std::string, Answer> answers = {
        {"lumora://ok", {CommandResult::done(), status}},
        {"lumora://tv", {CommandResult::nothing("display not found: t\nv\x01"), status}},
        {"lumora://gone", {CommandResult::nothing(""), std::nullopt}},
    };
    std::vector<InstanceChannel::Request> requests;
    InstanceChannel::Reply later;
    InstanceChannel agent(socket);
    ASSERT_EQ(
        agent.listen([&](const InstanceChannel::Request& request, InstanceChannel::Reply reply) {
            requests.push_back(request);
            if (request.url == "lumora://later") {
                // A command that finishes later (it waits for a monitor, say): the lines after
                // it are still answered in order.
                later = std::move(reply);
                QTimer::singleShot(100ms, [&] { later({CommandResult::done(), std::nullopt}); });
            } else {
                reply(answers.at(request.url));
            }
        }),
        InstanceChannel::Listen::listening);
    EXPECT_EQ(InstanceChannel(socket).listen(ignore), InstanceChannel::Listen::anotherInstance);

    const std::string expected =
        "done\npong\nerror\n"
        "done\nstatus " +
        std::to_string(status.size()) + "\n" + status +
        "nothing display not found: t\\nv\\x01\n"
        "nothing \nstatus none\n";
    EXPECT_EQ(onWorker([&] {
                  return rawExchange(socket,
                                     "url lumora://later\nping\r\nbogus\n"
                                     "url-status lumora://ok\nurl lumora://tv\n"
                                     "url-status lumora://gone\n",
                                     5s, expected.size());
              }),
              expected);
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_TRUE(requests[1].wantsStatus);
    EXPECT_FALSE(requests[2].wantsStatus);

    // A line longer than any request: the connection is dropped, the agent goes on.
    const std::string flood(InstanceChannel::kMaxLineBytes + 100, 'x');
    EXPECT_EQ(onWorker([&] { return rawExchange(socket, flood, 5s, 1); }), "<closed>");
    EXPECT_EQ(requests.size(), 4u);

    const struct {
        std::string url;
        bool wantsStatus;
        CommandResult result;
        std::optional<std::string> status;
    } cases[] = {
        {"lumora://ok", false, CommandResult::done(), std::nullopt},
        {"lumora://tv", true, CommandResult::nothing("display not found: t\\nv\\x01"), status},
        {"lumora://gone", true, CommandResult::nothing("the command did nothing"), std::nullopt},
    };
    for (const auto& c : cases) {
        auto answer =
            onWorker([&] { return InstanceChannel::handOver(socket, c.url, c.wantsStatus); });
        ASSERT_TRUE(answer) << c.url;
        EXPECT_EQ(answer->result, c.result) << c.url;
        EXPECT_EQ(answer->status, c.status) << c.url;
    }
}

TEST_F(InstanceChannelTest, AnAgentThatDoesNotFinishInTimeDidNothingForTheClient) {
    bool answeredLate = false;
    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen([&](const InstanceChannel::Request&, InstanceChannel::Reply reply) {
        // Answers after the client has given up and gone.
        QTimer::singleShot(300ms, [&answeredLate, reply = std::move(reply)] {
            reply({CommandResult::done(), std::nullopt});
            answeredLate = true;
        });
    }),
              InstanceChannel::Listen::listening);
    auto late = onWorker([&] { return InstanceChannel::handOver(socket, kUrl, false, 50ms); });
    ASSERT_TRUE(late);
    EXPECT_EQ(late->result, CommandResult::nothing("the running Lumora gave no answer in time"));
    EXPECT_TRUE(spinUntil([&] { return answeredLate; }));
    EXPECT_TRUE(onWorker([&] { return InstanceChannel::ping(socket); }));

    // A URL that would split into two requests is never sent.
    auto split = onWorker([&] { return InstanceChannel::handOver(socket, "lumora://a\nping"); });
    ASSERT_TRUE(split);
    EXPECT_EQ(split->result, CommandResult::nothing("a command URL cannot contain a line break"));
}

TEST_F(InstanceChannelTest, AnotherUsersConnectionIsDroppedUnanswered) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root to connect as another user";
    InstanceChannel agent(socket);
    ASSERT_EQ(agent.listen(ignore), InstanceChannel::Listen::listening);
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
