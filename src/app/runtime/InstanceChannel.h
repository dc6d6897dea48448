#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "model/CommandResult.h"

class QLocalServer;
class QLocalSocket;

namespace lumora::app {

// One agent per user, and the way a second start hands its URL to the first.
//
// The agent holds an exclusive lock on "<socket>.lock" for its whole life (the kernel drops it
// when the process dies, so a crash never blocks the next start) and listens on a local socket
// that only its own user may open; a connection from another user is dropped at once.
// Requests are lines, answered in order:
//   "url <URL>\n"         runs the URL command on the main thread, to the end (status file
//                          included), then answers "done\n", or "nothing <why>\n" when the
//                          command did nothing;
//   "url-status <URL>\n"  the same, then "status <N>\n" and the N bytes of the status file,
//                          or "status none\n" when there is none to send;
//   "ping\n"              answers "pong\n".
// Anything else answers "error\n".
class InstanceChannel {
  public:
    struct Request {
        std::string url;
        bool wantsStatus = false;  // the sender wants the status file after the command
    };
    struct Answer {
        CommandResult result;
        std::optional<std::string> status;  // the status file, when asked for and readable
    };
    // Call it once, when the command is finished (at once or later).
    using Reply = std::function<void(Answer)>;
    using UrlHandler = std::function<void(const Request& request, Reply reply)>;

    // A URL command may wait for monitors and refreshes: the client waits generously.
    static constexpr std::chrono::milliseconds kHandOverTimeout{60'000};
    static constexpr std::chrono::milliseconds kPingTimeout{2'000};
    // No request line is longer; a peer that sends more is dropped.
    static constexpr std::size_t kMaxLineBytes = 64 * 1024;
    // A status file lists a few displays in a few kilobytes; more is not one of ours.
    static constexpr std::size_t kMaxStatusBytes = 1024 * 1024;

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
    // Nothing when no agent of this user listens (start as the agent); otherwise the agent's
    // answer once the command is finished, and a result that is not carried out when the
    // agent did not answer in time or the URL cannot be sent.
    static std::optional<Answer> handOver(const std::string& socketPath, const std::string& url,
                                          bool wantsStatus = false,
                                          std::chrono::milliseconds timeout = kHandOverTimeout);
    // Whether an agent of this user answers.
    static bool ping(const std::string& socketPath,
                     std::chrono::milliseconds timeout = kPingTimeout);

  private:
    void acceptConnections();
    void serve(QLocalSocket* socket);
    // Answers one request line; false while the answer is still to come.
    bool handle(QLocalSocket* socket, const std::string& request);

    std::string path_;
    UrlHandler handler_;
    int lockDescriptor_ = -1;
    std::unique_ptr<QLocalServer> server_;
};

}  // namespace lumora::app
