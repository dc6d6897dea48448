#include "LogindBus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <thread>

namespace lumora::test {

namespace {

const QString kService = QStringLiteral("org.freedesktop.login1");

// QtDBus wants one application for the whole program, alive as long as any connection.
void ensureApp() {
    static int argc = 1;
    static char name[] = "test_linux_logind";
    static char* argv[] = {name, nullptr};
    static auto* app = new QCoreApplication(argc, argv);
    (void)app;
}

}  // namespace

std::string LogindBus::missing() {
    if (!wltest::installed("dbus-daemon")) return "dbus-daemon is not installed";
    return wltest::hasDbusmock() ? "" : "python3-dbusmock is not installed for /usr/bin/python3";
}

LogindBus::LogindBus(bool withLogind) {
    ensureApp();
    static int count = 0;
    name_ = QStringLiteral("lumora-logind-test-%1").arg(++count);
    if (!bus_.problem().empty() ||
        !QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), name_)
             .isConnected()) {
        failure = "no private bus: " + bus_.problem();
        return;
    }
    if (withLogind) startLogind();
}

void LogindBus::restartLogind() {
    logind_.reset();
    ASSERT_TRUE(spinUntil([&] {
        return !QDBusConnection(name_).interface()->isServiceRegistered(kService).value();
    }));
    startLogind();
}

void LogindBus::startLogind() {
    // The template is for the system bus: here that is the private one.
    logind_.emplace(
        std::vector<std::string>{"/usr/bin/python3", "-m", "dbusmock", "--template", "logind"},
        std::vector<std::string>{"DBUS_SYSTEM_BUS_ADDRESS=" + bus_.address()},
        bus_.dir() / "logind.out");
    if (!spinUntil([&] {
            return QDBusConnection(name_).interface()->isServiceRegistered(kService).value();
        })) {
        failure = "the logind mock did not start: " + readFile(bus_.dir() / "logind.out");
    }
}

LogindBus::~LogindBus() {
    QDBusConnection::disconnectFromBus(name_);
}

std::shared_ptr<lx::LogindClient> LogindBus::client(Lines& lines, std::string sessionId) const {
    return std::make_shared<lx::LogindClient>(
        QDBusConnection(name_), [&lines](const std::string& line) { lines.push_back(line); },
        std::move(sessionId));
}

QDBusMessage LogindBus::call(const QString& path, const QString& method, const QVariantList& args,
                             const QString& interface) const {
    QDBusMessage message = QDBusMessage::createMethodCall(kService, path, interface, method);
    message.setArguments(args);
    QDBusMessage reply = QDBusConnection(name_).call(message);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        ADD_FAILURE() << method.toStdString() << ": " << reply.errorMessage().toStdString();
    }
    return reply;
}

QString LogindBus::addSession(const QString& id) const {
    return call(kLogindPath, "AddSession", {id, "seat0", 1000u, "user", true})
        .arguments()
        .value(0)
        .toString();
}

// GetMethodCalls answers a(tav): (time, arguments) per call.
Calls LogindBus::calls(const QString& path, const QString& method) const {
    const auto all =
        call(path, "GetMethodCalls", {method}).arguments().value(0).value<QDBusArgument>();
    Calls result;
    all.beginArray();
    while (!all.atEnd()) {
        qulonglong time = 0;
        QVariantList args;
        all.beginStructure();
        all >> time >> args;
        all.endStructure();
        Lines& line = result.emplace_back();
        for (const QVariant& arg : args) {
            const bool wrapped = arg.userType() == qMetaTypeId<QDBusVariant>();
            const QVariant value = wrapped ? arg.value<QDBusVariant>().variant() : arg;
            line.push_back(value.toString().toStdString());
        }
    }
    all.endArray();
    return result;
}

int LogindBus::inhibitors() const {
    const auto list = call(kLogindPath, "ListInhibitors", {}, kManager)
                          .arguments()
                          .value(0)
                          .value<QDBusArgument>();
    int count = 0;
    list.beginArray();
    while (!list.atEnd()) {
        QString what;
        QString who;
        QString why;
        QString mode;
        uint uid = 0;
        uint pid = 0;
        list.beginStructure();
        list >> what >> who >> why >> mode >> uid >> pid;
        list.endStructure();
        ++count;
    }
    list.endArray();
    return count;
}

std::shared_ptr<lx::LogindClient> offlineClient(Lines& lines) {
    ensureApp();
    return std::make_shared<lx::LogindClient>(
        QDBusConnection("lumora-no-bus"),
        [&lines](const std::string& line) { lines.push_back(line); }, std::string());
}

bool spinUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace lumora::test
