#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QLocalServer;
class QLocalSocket;

namespace lumora::app {

// One agent per user, and the way a second start hands its URL to the first.
//
// The agent holds an exclusive lock on "<socket>.lock" for its whole life (the kernel drops it
// when the process dies, so a crash never blocks the next start) and listens on a local socket
// that only its own user may open; a connection from another user is dropped at once.
// Requests are lines: "url <URL>\n" runs the URL command on the main thread, to the end, then
// answers "done\n"; "ping\n" answers "pong\n".
class InstanceChannel {
  public:
    using UrlHandler = std::function<void(const std::string& url)>;

    // A URL command may wait for monitors and refreshes: the client waits generously.
    static constexpr std::chrono::milliseconds kHandOverTimeout{60'000};
    static constexpr std::chrono::milliseconds kPingTimeout{2'000};
    // No request line is longer; a peer that sends more is dropped.
    static constexpr std::size_t kMaxLineBytes = 64 * 1024;

    enum class Listen {
        listening,        // this process is the agent
        anotherInstance,  // an agent of this user already runs
        failed,           // no lock or no socket could be made; the caller runs without them
    };

    explicit InstanceChannel(std::string socketPath);
    // Stops listening, removes the socket and releases the lock.
    ~InstanceChannel();
    InstanceChannel(const InstanceChannel&) = delete;
    InstanceChannel& operator=(const InstanceChannel&) = delete;

    // Takes the lock, replaces a socket file left by a dead agent, and listens. The handler
    // runs on the calling thread's event loop.
    Listen listen(UrlHandler handler);

    [[nodiscard]] const std::string& socketPath() const { return path_; }

    // Client side, blocking; usable from any thread and before the Qt application exists.
    // Nothing when no agent of this user listens (start as the agent); true once the agent
    // has carried the command out; false when it did not answer "done" in time.
    static std::optional<bool> handOver(const std::string& socketPath, const std::string& url,
                                        std::chrono::milliseconds timeout = kHandOverTimeout);
    // Whether an agent of this user answers.
    static bool ping(const std::string& socketPath,
                     std::chrono::milliseconds timeout = kPingTimeout);

  private:
    void acceptConnections();
    void serve(QLocalSocket* socket);
    [[nodiscard]] std::string answer(const std::string& request);

    std::string path_;
    UrlHandler handler_;
    int lockDescriptor_ = -1;
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace lumora::app
