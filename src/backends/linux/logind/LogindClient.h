#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QString>
#include <QVariant>
#include <QVariantList>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "logind/InhibitorLock.h"
#include "logind/LogindSignal.h"

namespace lumora::lx {

// Where the logind parts write their one-line traces (the event log in production).
using LogFunction = std::function<void(const std::string&)>;

// What came back from one logind call: the reply's arguments, or the bus's error message.
struct LogindReply {
    bool ok = false;
    QVariantList values;
    std::string error;
};

// A small client of systemd-logind (org.freedesktop.login1) on a bus the caller hands in: the
// system bus in production, a private one in tests. It asks once, at construction, whether
// logind answers; when it does not, that is one log line and every later call fails at once
// without going to the bus. While the client lives it watches logind's name on the bus: when
// logind goes away (an update restarts it) the client is unavailable, and when it comes back
// the client is available again and tells whoever must take something again (an inhibitor).
//
// Threading: main thread; signal handlers run on the main thread's Qt event loop.
class LogindClient {
  public:
    // `sessionId` names this user's session when logind cannot tell it from our process id
    // (a process started outside the session, for example by the user's service manager).
    LogindClient(QDBusConnection bus, LogFunction log,
                 std::string sessionId = environmentSessionId());

    [[nodiscard]] bool available() const { return available_; }

    // Failures are logged as "logind: <method> failed: <message>".
    LogindReply callManager(const QString& method, const QVariantList& args = {});
    LogindReply callSession(const QString& method, const QVariantList& args = {});
    // A Manager property as the only value of the reply. Not logged: callers that poll decide
    // what is worth a line.
    LogindReply managerProperty(const QString& name);
    // A "block" inhibitor lock on `what` ("idle", "handle-lid-switch", ...); not held when
    // logind refuses (logged).
    InhibitorLock inhibit(const QString& what, const QString& why);

    // Calls `handler` for each signal `name` of the Manager object. Nothing when logind is not
    // available.
    std::unique_ptr<LogindSignal> onManagerSignal(const QString& name,
                                                  LogindSignal::Handler handler);
    // Calls `handler` for each PropertiesChanged of the Manager object (arguments: interface,
    // changed values, invalidated names).
    std::unique_ptr<LogindSignal> onManagerPropertiesChanged(LogindSignal::Handler handler);

    void log(const std::string& line) const;

    // Calls `handler` each time logind comes back on the bus after it had gone, until the
    // returned token is forgotten.
    using ReturnToken = std::uint64_t;
    ReturnToken onReturn(std::function<void()> handler);
    void forgetReturn(ReturnToken token) { returnHandlers_.erase(token); }

    // XDG_SESSION_ID, or empty.
    static std::string environmentSessionId();

  private:
    LogindReply call(const QString& path, const QString& interface, const QString& method,
                     const QVariantList& args, bool quiet);
    const QString& sessionPath();

    void ownerChanged(bool present);

    QDBusConnection bus_;
    LogFunction log_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::map<ReturnToken, std::function<void()>> returnHandlers_;
    ReturnToken nextReturnToken_ = 1;
    std::string sessionId_;
    bool available_ = false;
    std::optional<QString> session_;
};

}  // namespace lumora::lx
