#include "logind/LogindClient.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <cstdlib>
#include <utility>

#include "dbus/BusNameWatch.h"

namespace lumora::lx {

namespace {

const QString kService = QStringLiteral("org.freedesktop.login1");
const QString kManagerPath = QStringLiteral("/org/freedesktop/login1");
const QString kManagerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString kSessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString kPropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString kPeerInterface = QStringLiteral("org.freedesktop.DBus.Peer");
// logind's name for "the session of the caller", the last resort when ours cannot be found.
const QString kAutoSessionPath = QStringLiteral("/org/freedesktop/login1/session/auto");
const QString kWho = QStringLiteral("Lumora");
const QString kBlock = QStringLiteral("block");

// logind answers within milliseconds; a hung one must not freeze the main thread for the bus's
// default 25 s.
constexpr int kCallTimeoutMs = 2000;

constexpr const char* kNotAvailable = "logind is not available";

std::string errorText(const QDBusMessage& reply) {
    const QString message = reply.errorMessage();
    return (message.isEmpty() ? reply.errorName() : message).toStdString();
}

}  // namespace

LogindClient::LogindClient(QDBusConnection bus, LogFunction log, std::string sessionId)
    : bus_(std::move(bus)), log_(std::move(log)), sessionId_(std::move(sessionId)) {
    if (!bus_.isConnected()) {
        const QString why = bus_.lastError().message();
        this->log("logind: not available (" +
                  (why.isEmpty() ? std::string("no bus connection") : why.toStdString()) + ")");
        return;
    }
    watcher_ = watchBusName(bus_, kService, [this](bool present) { ownerChanged(present); });
    // Ping also starts a logind that is only activatable.
    const LogindReply ping = call(kManagerPath, kPeerInterface, QStringLiteral("Ping"), {}, true);
    available_ = ping.ok;
    if (!available_) this->log("logind: not available (" + ping.error + ")");
}

void LogindClient::ownerChanged(bool present) {
    if (present == available_) return;
    available_ = present;
    session_.reset();  // a new logind numbers its objects anew
    if (!present) {
        log("logind: gone from the bus; waiting for it to come back");
        return;
    }
    log("logind: back on the bus");
    // A handler may forget itself or others: only those still there are called.
    std::vector<ReturnToken> tokens;
    for (const auto& entry : returnHandlers_)
        tokens.push_back(entry.first);
    for (const ReturnToken token : tokens) {
        const auto found = returnHandlers_.find(token);
        if (found == returnHandlers_.end()) continue;
        const auto handler = found->second;
        handler();
    }
}

LogindClient::ReturnToken LogindClient::onReturn(std::function<void()> handler) {
    const ReturnToken token = nextReturnToken_++;
    returnHandlers_.emplace(token, std::move(handler));
    return token;
}

std::string LogindClient::environmentSessionId() {
    const char* id = std::getenv("XDG_SESSION_ID");
    return id ? std::string(id) : std::string();
}

void LogindClient::log(const std::string& line) const {
    if (log_) log_(line);
}

LogindReply LogindClient::call(const QString& path, const QString& interface, const QString& method,
                               const QVariantList& args, bool quiet) {
    QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
    message.setArguments(args);
    const QDBusMessage reply = bus_.call(message, QDBus::Block, kCallTimeoutMs);
    if (reply.type() == QDBusMessage::ReplyMessage) return {true, reply.arguments(), {}};
    LogindReply failed{false, {}, errorText(reply)};
    if (!quiet) log("logind: " + method.toStdString() + " failed: " + failed.error);
    return failed;
}

LogindReply LogindClient::callManager(const QString& method, const QVariantList& args) {
    if (!available_) return {false, {}, kNotAvailable};
    return call(kManagerPath, kManagerInterface, method, args, false);
}

LogindReply LogindClient::callSession(const QString& method, const QVariantList& args) {
    if (!available_) return {false, {}, kNotAvailable};
    return call(sessionPath(), kSessionInterface, method, args, false);
}

// Our session: the one logind files this process under, else the one the login manager named
// in the environment, else whichever logind picks for the caller.
const QString& LogindClient::sessionPath() {
    if (session_) return *session_;
    const auto pathOf = [](const LogindReply& reply) {
        return reply.ok && !reply.values.isEmpty()
                   ? reply.values.first().value<QDBusObjectPath>().path()
                   : QString();
    };
    QString path = pathOf(call(kManagerPath, kManagerInterface, QStringLiteral("GetSessionByPID"),
                               {QVariant::fromValue(static_cast<quint32>(::getpid()))}, true));
    if (path.isEmpty() && !sessionId_.empty()) {
        path = pathOf(call(kManagerPath, kManagerInterface, QStringLiteral("GetSession"),
                           {QString::fromStdString(sessionId_)}, true));
    }
    session_ = path.isEmpty() ? kAutoSessionPath : path;
    return *session_;
}

LogindReply LogindClient::managerProperty(const QString& name) {
    if (!available_) return {false, {}, kNotAvailable};
    LogindReply reply = call(kManagerPath, kPropertiesInterface, QStringLiteral("Get"),
                             {kManagerInterface, name}, true);
    if (reply.ok && !reply.values.isEmpty()) {
        reply.values = {reply.values.first().value<QDBusVariant>().variant()};
    }
    return reply;
}

InhibitorLock LogindClient::inhibit(const QString& what, const QString& why) {
    if (!available_) return {};
    if (!(bus_.connectionCapabilities() & QDBusConnection::UnixFileDescriptorPassing)) {
        log("logind: Inhibit failed: the bus cannot pass file descriptors");
        return {};
    }
    const LogindReply reply = callManager(QStringLiteral("Inhibit"), {what, kWho, why, kBlock});
    if (!reply.ok) return {};
    const int received =
        reply.values.isEmpty()
            ? -1
            : reply.values.first().value<QDBusUnixFileDescriptor>().fileDescriptor();
    // The reply's copy closes with the reply; ours must outlive it.
    const int fd = received >= 0 ? ::fcntl(received, F_DUPFD_CLOEXEC, 0) : -1;
    if (fd < 0) {
        log("logind: Inhibit failed: no file descriptor in the reply");
        return {};
    }
    return InhibitorLock(fd);
}

std::unique_ptr<LogindSignal> LogindClient::onManagerSignal(const QString& name,
                                                            LogindSignal::Handler handler) {
    if (!available_) return nullptr;
    return std::make_unique<LogindSignal>(bus_, kService, kManagerPath, kManagerInterface, name,
                                          std::move(handler));
}

std::unique_ptr<LogindSignal> LogindClient::onManagerPropertiesChanged(
    LogindSignal::Handler handler) {
    if (!available_) return nullptr;
    return std::make_unique<LogindSignal>(bus_, kService, kManagerPath, kPropertiesInterface,
                                          QStringLiteral("PropertiesChanged"), std::move(handler));
}

}  // namespace lumora::lx
