#include "portal/PortalShortcuts.h"

#include <X11/Xlib.h>

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <utility>

#include "dbus/BusNameWatch.h"
#include "x11/KeyMap.h"

// One shortcut as the portal's methods and signals carry it: (sa{sv}).
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};
Q_DECLARE_METATYPE(PortalShortcut)

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

namespace lumora::lx {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");

constexpr std::pair<std::uint32_t, const char*> kModifierNames[] = {{kHotKeyControl, "CTRL"},
                                                                    {kHotKeyOption, "ALT"},
                                                                    {kHotKeyShift, "SHIFT"},
                                                                    {kHotKeyCommand, "LOGO"}};

QDBusMessage callPortal(const QDBusConnection& bus, const QString& interface, const QString& method,
                        const QVariantList& args) {
    QDBusMessage message = QDBusMessage::createMethodCall(kService, kPath, interface, method);
    message.setArguments(args);
    return bus.call(message, QDBus::Block, PortalShortcuts::kCallTimeoutMilliseconds);
}

}  // namespace

std::string portalTrigger(std::uint32_t keyCode, std::uint32_t modifiers) {
    const std::vector<unsigned long> keysyms = keysymsForKeyCode(keyCode);
    const char* name = keysyms.empty() ? nullptr : XKeysymToString(keysyms.front());
    if (name == nullptr) return {};
    std::string out;
    for (const auto& [mask, word] : kModifierNames) {
        if ((modifiers & mask) == 0) continue;
        out += word;
        out += '+';
    }
    return out + name;
}

std::unique_ptr<PortalShortcuts> PortalShortcuts::connect(QDBusConnection bus, LogFunction log) {
    if (!bus.isConnected()) return nullptr;
    const QDBusMessage version =
        callPortal(bus, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                   {kInterface, QStringLiteral("version")});
    if (version.type() != QDBusMessage::ReplyMessage) return nullptr;
    return std::unique_ptr<PortalShortcuts>(new PortalShortcuts(std::move(bus), std::move(log)));
}

PortalShortcuts::PortalShortcuts(QDBusConnection bus, LogFunction log)
    : bus_(std::move(bus)), log_(std::move(log)) {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    // Every answer of the portal, whatever its request object: the path is known only once
    // the call returns, and the answer may come first.
    responses_ = std::make_unique<LogindSignal>(bus_, kService, QString(), kRequest,
                                                QStringLiteral("Response"),
                                                [this](const QDBusMessage& m) { response(m); });
    activations_ = std::make_unique<LogindSignal>(bus_, kService, kPath, kInterface,
                                                  QStringLiteral("Activated"),
                                                  [this](const QDBusMessage& m) { activated(m); });
    changes_ = std::make_unique<LogindSignal>(
        bus_, kService, kPath, kInterface, QStringLiteral("ShortcutsChanged"),
        [this](const QDBusMessage& m) { reportTriggers(m.arguments().value(1)); });
    watcher_ = watchBusName(bus_, kService, [this](bool present) { ownerChanged(present); });
    createSession();
}

void PortalShortcuts::ownerChanged(bool present) {
    // Whatever the old portal knew (the session, the bindings, pending answers) went with it.
    session_.clear();
    bound_ = false;
    waiting_.clear();
    early_.clear();
    if (!present) {
        log_("shortcuts: the desktop portal left the bus; the shortcuts wait for it");
        return;
    }
    log_("shortcuts: the desktop portal is back; binding the shortcuts again");
    createSession();
}

PortalShortcuts::~PortalShortcuts() {
    if (session_.isEmpty()) return;
    QDBusMessage close = QDBusMessage::createMethodCall(
        kService, session_, QStringLiteral("org.freedesktop.portal.Session"),
        QStringLiteral("Close"));
    bus_.call(close, QDBus::NoBlock);
}

void PortalShortcuts::createSession() {
    const QString token = QStringLiteral("lumora_session_%1").arg(++requests_);
    QVariantMap options{
        {QStringLiteral("handle_token"), token},
        {QStringLiteral("session_handle_token"), QString::fromLatin1(kSessionToken)}};
    request(QStringLiteral("CreateSession"), {options}, [this](const QVariantMap& results) {
        session_ = results.value(QStringLiteral("session_handle")).toString();
        if (session_.isEmpty()) {
            session_ =
                qvariant_cast<QDBusObjectPath>(results.value(QStringLiteral("session_handle")))
                    .path();
        }
        log_("shortcuts: desktop portal session " + session_.toStdString());
        if (!shortcuts_.empty()) bind();
    });
}

void PortalShortcuts::bindByName(const std::vector<NamedShortcut>& shortcuts) {
    if (bound_ || shortcuts.empty()) return;
    shortcuts_ = shortcuts;
    if (!session_.isEmpty()) bind();
}

void PortalShortcuts::bind() {
    bound_ = true;
    QList<PortalShortcut> list;
    for (const NamedShortcut& s : shortcuts_) {
        QVariantMap properties{
            {QStringLiteral("description"), QString::fromStdString(s.description)}};
        if (s.hasKey) {
            const std::string trigger = portalTrigger(s.keyCode, s.modifiers);
            if (!trigger.empty()) {
                properties.insert(QStringLiteral("preferred_trigger"),
                                  QString::fromStdString(trigger));
            }
        }
        list.push_back({QString::fromStdString(s.name), properties});
    }
    const QString token = QStringLiteral("lumora_bind_%1").arg(++requests_);
    QVariantMap options{{QStringLiteral("handle_token"), token}};
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(session_)), QVariant::fromValue(list), QString(),
             options},
            [this](const QVariantMap& results) {
                reportTriggers(results.value(QStringLiteral("shortcuts")));
            });
}

void PortalShortcuts::request(const QString& method, const QVariantList& args, Continuation then) {
    const QDBusMessage reply = callPortal(bus_, kInterface, method, args);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        log_("shortcuts: " + method.toStdString() +
             " failed: " + reply.errorMessage().toStdString());
        return;
    }
    const QString path = qvariant_cast<QDBusObjectPath>(reply.arguments().value(0)).path();
    if (auto early = early_.find(path); early != early_.end()) {
        const QDBusMessage answer = early->second;
        early_.erase(early);
        waiting_[path] = std::move(then);
        response(answer);
        return;
    }
    waiting_[path] = std::move(then);
}

void PortalShortcuts::response(const QDBusMessage& message) {
    const auto waiting = waiting_.find(message.path());
    if (waiting == waiting_.end()) {
        early_[message.path()] = message;
        return;
    }
    Continuation then = std::move(waiting->second);
    waiting_.erase(waiting);
    const auto code = message.arguments().value(0).toUInt();
    if (code != 0) {
        // 1: the user cancelled; 2: anything else.
        log_("shortcuts: the desktop portal refused (" + std::to_string(code) + ")");
        return;
    }
    const QVariant results = message.arguments().value(1);
    if (results.userType() != qMetaTypeId<QDBusArgument>()) return;
    const auto argument = results.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("a{sv}")) return;
    then(qdbus_cast<QVariantMap>(argument));
}

void PortalShortcuts::activated(const QDBusMessage& message) {
    const QList<QVariant> args = message.arguments();
    const QString session = qvariant_cast<QDBusObjectPath>(args.value(0)).path();
    if (!session_.isEmpty() && session != session_) return;
    const std::string id = args.value(1).toString().toStdString();
    for (const NamedShortcut& s : shortcuts_) {
        if (s.name == id && pressed_) pressed_(s.id);
    }
}

void PortalShortcuts::reportTriggers(const QVariant& shortcuts) {
    // A portal that answers without the list (or with something else) reports nothing.
    if (shortcuts.userType() != qMetaTypeId<QDBusArgument>()) return;
    const auto argument = shortcuts.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("a(sa{sv})")) return;
    QList<PortalShortcut> list;
    argument >> list;
    std::map<std::string, std::string> triggers;
    for (const PortalShortcut& s : list) {
        triggers[s.id.toStdString()] =
            s.properties.value(QStringLiteral("trigger_description")).toString().toStdString();
    }
    if (triggers_) triggers_(triggers);
}

}  // namespace lumora::lx
