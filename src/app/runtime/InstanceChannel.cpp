#include "runtime/InstanceChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <QLocalServer>
#include <QLocalSocket>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "runtime/PeerCredentials.h"

namespace lumora::app {

namespace {

using Clock = std::chrono::steady_clock;

const char* const kLockSuffix = ".lock";
// Requests and answers, one line each.
constexpr std::string_view kUrlRequest = "url ";
constexpr std::string_view kPing = "ping";
constexpr std::string_view kPong = "pong";
constexpr std::string_view kDone = "done";
constexpr std::string_view kUnknown = "error";
// Bytes read from the agent per call; answers are a few bytes.
constexpr std::size_t kReadChunk = 256;

#if defined(MSG_NOSIGNAL)
constexpr int kSendFlags = MSG_NOSIGNAL;  // an agent that hangs up must not kill the client
#else
constexpr int kSendFlags = 0;
#endif

class Descriptor {
  public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return fd_; }

  private:
    int fd_;
};

int remainingMilliseconds(Clock::time_point deadline) {
    auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

// A connection to a socket at `path` whose listener runs as this user, or -1.
int connectToAgent(const std::string& path, Clock::time_point deadline) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    Descriptor fd(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (fd.get() < 0) return -1;
    ::fcntl(fd.get(), F_SETFD, FD_CLOEXEC);
#if defined(SO_NOSIGPIPE)
    int one = 1;
    ::setsockopt(fd.get(), SOL_SOCKET, SO_NOSIGPIPE, &one, sizeof one);
#endif
    // Bounds a connect that waits for room in a busy agent's backlog, and every send.
    const int ms = std::max(1, remainingMilliseconds(deadline));
    timeval limit{ms / 1000, (ms % 1000) * 1000};
    ::setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return -1;  // no file, or a file nobody listens on any more
    }
    if (!peerIsThisUser(fd.get())) return -1;
    return ::dup(fd.get());
}

bool sendAll(int fd, const std::string& text) {
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t n = ::send(fd, text.data() + sent, text.size() - sent, kSendFlags);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        sent += static_cast<std::size_t>(n);
    }
    return true;
}

// One answer line without its line feed; nothing on timeout, hang-up or an endless line.
std::optional<std::string> readLine(int fd, Clock::time_point deadline) {
    std::string buffer;
    for (;;) {
        if (auto end = buffer.find('\n'); end != std::string::npos) return buffer.substr(0, end);
        if (buffer.size() > InstanceChannel::kMaxLineBytes) return std::nullopt;
        const int ms = remainingMilliseconds(deadline);
        if (ms == 0) return std::nullopt;
        pollfd wait{fd, POLLIN, 0};
        const int ready = ::poll(&wait, 1, ms);
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0) return std::nullopt;
        if (ready == 0) continue;  // the deadline check above ends the wait
        char chunk[kReadChunk];
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (n <= 0) return std::nullopt;
        buffer.append(chunk, static_cast<std::size_t>(n));
    }
}

// Sends one request line and reads the answer. The outer nothing: nobody of ours listens.
std::optional<std::optional<std::string>> exchange(const std::string& path,
                                                   const std::string& request,
                                                   std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    Descriptor fd(connectToAgent(path, deadline));
    if (fd.get() < 0) return std::nullopt;
    if (!sendAll(fd.get(), request)) return std::optional<std::string>{};
    return readLine(fd.get(), deadline);
}

}  // namespace

InstanceChannel::InstanceChannel(std::string socketPath) : path_(std::move(socketPath)) {}

InstanceChannel::~InstanceChannel() {
    if (server_) {
        server_->close();
        server_.reset();
        // Still holding the lock, so the file is ours to remove.
        QLocalServer::removeServer(QString::fromStdString(path_));
    }
    if (lockDescriptor_ >= 0) ::close(lockDescriptor_);
}

InstanceChannel::Listen InstanceChannel::listen(UrlHandler handler) {
    if (lockDescriptor_ >= 0) return server_ ? Listen::listening : Listen::failed;
    const std::string lockPath = path_ + kLockSuffix;
    const int lock = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW, 0600);
    if (lock < 0) return Listen::failed;
    ::fcntl(lock, F_SETFD, FD_CLOEXEC);
    if (::flock(lock, LOCK_EX | LOCK_NB) != 0) {
        const bool held = errno == EWOULDBLOCK;
        ::close(lock);
        return held ? Listen::anotherInstance : Listen::failed;
    }
    // The lock stays held even if listening fails below: this process is the agent either way.
    lockDescriptor_ = lock;
    handler_ = std::move(handler);

    // With the lock ours, a socket file can only be a dead agent's.
    QLocalServer::removeServer(QString::fromStdString(path_));
    auto server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(QString::fromStdString(path_))) return Listen::failed;
    QObject::connect(server.get(), &QLocalServer::newConnection, server.get(),
                     [this] { acceptConnections(); });
    server_ = std::move(server);
    return Listen::listening;
}

void InstanceChannel::acceptConnections() {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
        if (!peerIsThisUser(static_cast<int>(socket->socketDescriptor()))) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QLocalSocket::readyRead, socket,
                         [this, socket] { serve(socket); });
        // Bytes that came with the connection are already waiting.
        if (socket->bytesAvailable() > 0) serve(socket);
    }
}

void InstanceChannel::serve(QLocalSocket* socket) {
    while (socket->canReadLine()) {
        QByteArray line = socket->readLine(static_cast<qint64>(kMaxLineBytes) + 1);
        if (!line.endsWith('\n')) break;  // longer than any request
        line.chop(1);
        if (line.endsWith('\r')) line.chop(1);
        socket->write(QByteArray::fromStdString(answer(line.toStdString()) + "\n"));
        socket->flush();
    }
    if (static_cast<std::size_t>(socket->bytesAvailable()) > kMaxLineBytes) {
        socket->abort();
        socket->deleteLater();
    }
}

std::string InstanceChannel::answer(const std::string& request) {
    if (request == kPing) return std::string(kPong);
    if (request.rfind(kUrlRequest, 0) == 0) {
        if (handler_) handler_(request.substr(kUrlRequest.size()));
        return std::string(kDone);
    }
    return std::string(kUnknown);
}

std::optional<bool> InstanceChannel::handOver(const std::string& socketPath, const std::string& url,
                                              std::chrono::milliseconds timeout) {
    // A line break would end the request early and smuggle in another one.
    if (url.find_first_of("\r\n") != std::string::npos) {
        if (!ping(socketPath)) return std::nullopt;
        return false;
    }
    auto reply = exchange(socketPath, std::string(kUrlRequest) + url + "\n", timeout);
    if (!reply) return std::nullopt;
    return *reply == kDone;
}

bool InstanceChannel::ping(const std::string& socketPath, std::chrono::milliseconds timeout) {
    auto reply = exchange(socketPath, std::string(kPing) + "\n", timeout);
    return reply && *reply == kPong;
}

}  // namespace lumora::app
