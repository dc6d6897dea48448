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
#include <QPointer>
#include <QVariant>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "runtime/PeerCredentials.h"

namespace lumora::app {

namespace {

using Clock = std::chrono::steady_clock;

const char* const kLockSuffix = ".lock";
// The words of requests and answers (the header describes the exchange).
constexpr std::string_view kUrlRequest = "url ";
constexpr std::string_view kUrlStatusRequest = "url-status ";
constexpr std::string_view kPing = "ping";
constexpr std::string_view kPong = "pong";
constexpr std::string_view kDone = "done";
constexpr std::string_view kNothing = "nothing";
constexpr std::string_view kStatus = "status";
constexpr std::string_view kNoStatus = "none";
constexpr std::string_view kUnknown = "error";
// A connection's property while the answer to its URL request is still to come: later
// requests on it wait, so that answers keep their order.
const char* const kBusyProperty = "lumoraBusy";
// Bytes read from the agent per call.
constexpr std::size_t kReadChunk = 4096;
// Why a hand-over came to nothing on the client's side.
const char* const kNoAnswer = "the running Lumora gave no answer in time";
const char* const kSplitUrl = "a command URL cannot contain a line break";

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

// Reads an agent's answer: lines, and blocks of a stated length, all before one deadline.
class Reader {
  public:
    Reader(int fd, Clock::time_point deadline) : fd_(fd), deadline_(deadline) {}

    // One line without its line feed; nothing on timeout, hang-up or an endless line.
    std::optional<std::string> line() {
        for (;;) {
            if (auto end = buffer_.find('\n'); end != std::string::npos) {
                std::string out = buffer_.substr(0, end);
                buffer_.erase(0, end + 1);
                return out;
            }
            if (buffer_.size() > InstanceChannel::kMaxLineBytes || !fill()) return std::nullopt;
        }
    }

    // Exactly `size` bytes; nothing when they do not all come in time.
    std::optional<std::string> bytes(std::size_t size) {
        while (buffer_.size() < size) {
            if (!fill()) return std::nullopt;
        }
        std::string out = buffer_.substr(0, size);
        buffer_.erase(0, size);
        return out;
    }

  private:
    bool fill() {
        for (;;) {
            const int ms = remainingMilliseconds(deadline_);
            if (ms == 0) return false;
            pollfd wait{fd_, POLLIN, 0};
            const int ready = ::poll(&wait, 1, ms);
            if (ready < 0 && errno == EINTR) continue;
            if (ready < 0) return false;
            if (ready == 0) continue;  // the deadline check above ends the wait
            char chunk[kReadChunk];
            const ssize_t n = ::read(fd_, chunk, sizeof chunk);
            if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
            if (n <= 0) return false;
            buffer_.append(chunk, static_cast<std::size_t>(n));
            return true;
        }
    }

    int fd_;
    Clock::time_point deadline_;
    std::string buffer_;
};

// Sends one request line and reads the answer with `read`. Nothing: nobody of ours listens.
template <class Read>
auto exchange(const std::string& path, const std::string& request,
              std::chrono::milliseconds timeout, Read read)
    -> std::optional<decltype(read(std::declval<Reader&>()))> {
    const auto deadline = Clock::now() + timeout;
    Descriptor fd(connectToAgent(path, deadline));
    if (fd.get() < 0) return std::nullopt;
    Reader reader(fd.get(), deadline);
    if (!sendAll(fd.get(), request)) return decltype(read(reader)){};
    return read(reader);
}

// The reason for nothing done travels as one line: control characters are written out.
std::string oneLine(const std::string& text) {
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string out;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (byte < 0x20 || byte == 0x7F) {
            out += "\\x";
            out += kHex[byte >> 4];
            out += kHex[byte & 0x0F];
        } else {
            out += c;
        }
    }
    return out;
}

std::string encodeAnswer(const InstanceChannel::Answer& answer, bool withStatus) {
    std::string out = answer.result.carriedOut
                          ? std::string(kDone)
                          : std::string(kNothing) + " " + oneLine(answer.result.problem);
    out += "\n";
    if (!withStatus) return out;
    const auto& status = answer.status;
    if (status && status->size() <= InstanceChannel::kMaxStatusBytes) {
        out += std::string(kStatus) + " " + std::to_string(status->size()) + "\n" + *status;
    } else {
        out += std::string(kStatus) + " " + std::string(kNoStatus) + "\n";
    }
    return out;
}

// The answer to a URL request, as the agent sent it.
std::optional<InstanceChannel::Answer> decodeAnswer(Reader& reader, bool withStatus) {
    auto line = reader.line();
    if (!line) return std::nullopt;
    InstanceChannel::Answer answer;
    if (*line == kDone) {
        answer.result = CommandResult::done();
    } else if (line->starts_with(kNothing)) {
        std::string why = line->substr(kNothing.size());
        if (!why.empty() && why.front() == ' ') why.erase(0, 1);
        answer.result = CommandResult::nothing(why.empty() ? "the command did nothing" : why);
    } else {
        return std::nullopt;
    }
    if (!withStatus) return answer;
    auto header = reader.line();
    const std::string prefix = std::string(kStatus) + " ";
    if (!header || !header->starts_with(prefix)) return std::nullopt;
    const std::string size = header->substr(prefix.size());
    if (size == kNoStatus) return answer;
    std::size_t bytes = 0;
    auto [end, error] = std::from_chars(size.data(), size.data() + size.size(), bytes);
    if (error != std::errc{} || end != size.data() + size.size() || size.empty() ||
        bytes > InstanceChannel::kMaxStatusBytes) {
        return std::nullopt;
    }
    answer.status = reader.bytes(bytes);
    if (!answer.status) return std::nullopt;
    return answer;
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
    while (!socket->property(kBusyProperty).toBool() && socket->canReadLine()) {
        QByteArray line = socket->readLine(static_cast<qint64>(kMaxLineBytes) + 1);
        if (!line.endsWith('\n')) break;  // longer than any request
        line.chop(1);
        if (line.endsWith('\r')) line.chop(1);
        if (!handle(socket, line.toStdString())) break;
    }
    if (static_cast<std::size_t>(socket->bytesAvailable()) > kMaxLineBytes) {
        socket->abort();
        socket->deleteLater();
    }
}

bool InstanceChannel::handle(QLocalSocket* socket, const std::string& request) {
    auto send = [](QLocalSocket* to, const std::string& text) {
        to->write(QByteArray::fromStdString(text));
        to->flush();
    };
    if (request == kPing) {
        send(socket, std::string(kPong) + "\n");
        return true;
    }
    const bool wantsStatus = request.starts_with(kUrlStatusRequest);
    if (!wantsStatus && !request.starts_with(kUrlRequest)) {
        send(socket, std::string(kUnknown) + "\n");
        return true;
    }
    Request parsed{request.substr((wantsStatus ? kUrlStatusRequest : kUrlRequest).size()),
                   wantsStatus};
    if (!handler_) {
        send(socket, encodeAnswer({CommandResult::nothing("this agent takes no commands"), {}},
                                  wantsStatus));
        return true;
    }
    socket->setProperty(kBusyProperty, true);
    // The client may be gone (or the channel closed) by the time the command is finished.
    QPointer<QLocalSocket> guard(socket);
    auto answered = std::make_shared<bool>(false);
    handler_(parsed, [this, guard, answered, wantsStatus, send](Answer answer) {
        if (*answered || !guard) return;
        *answered = true;
        send(guard, encodeAnswer(answer, wantsStatus));
        guard->setProperty(kBusyProperty, false);
        // Requests that came meanwhile; from the event loop, so an answer given at once does
        // not serve them from inside the handler.
        QMetaObject::invokeMethod(
            guard,
            [this, guard] {
                if (guard) serve(guard);
            },
            Qt::QueuedConnection);
    });
    return !socket->property(kBusyProperty).toBool();
}

std::optional<InstanceChannel::Answer> InstanceChannel::handOver(
    const std::string& socketPath, const std::string& url, bool wantsStatus,
    std::chrono::milliseconds timeout) {
    // A line break would end the request early and smuggle in another one.
    if (url.find_first_of("\r\n") != std::string::npos) {
        if (!ping(socketPath)) return std::nullopt;
        return Answer{CommandResult::nothing(kSplitUrl), std::nullopt};
    }
    const std::string request =
        std::string(wantsStatus ? kUrlStatusRequest : kUrlRequest) + url + "\n";
    auto reply = exchange(socketPath, request, timeout, [wantsStatus](Reader& reader) {
        return decodeAnswer(reader, wantsStatus);
    });
    if (!reply) return std::nullopt;
    if (!*reply) return Answer{CommandResult::nothing(kNoAnswer), std::nullopt};
    return std::move(**reply);
}

bool InstanceChannel::ping(const std::string& socketPath, std::chrono::milliseconds timeout) {
    auto reply = exchange(socketPath, std::string(kPing) + "\n", timeout,
                          [](Reader& reader) { return reader.line(); });
    return reply && *reply && **reply == kPong;
}

}  // namespace lumora::app
