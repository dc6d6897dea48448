#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QString>
#include <QVariantMap>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "logind/LogindClient.h"
#include "logind/LogindSignal.h"
#include "platform/Input.h"

namespace lumora::lx {

// "CTRL+ALT+LOGO+Up": canonical keys in the shortcut syntax the desktop portal takes as a
// preferred trigger (modifiers, then the key's XKB keysym name). Empty for a key without one.
[[nodiscard]] std::string portalTrigger(std::uint32_t keyCode, std::uint32_t modifiers);

// Global shortcuts through the desktop portal (org.freedesktop.portal.GlobalShortcuts), where
// a Wayland session allows no key grabs: one session, every action bound by name with its
// stored keys as the preferred trigger, and the portal's Activated signal as the press. The
// desktop owns the keys from then on; what it reports for each is handed to the triggers
// handler. No brightness-key tap.
//
// Every call to the bus waits 2 s at most; the portal's answers (Request::Response) and
// presses arrive on the main thread's event loop. A portal that leaves the bus and comes back
// (the desktop restarting it) gets a new session and the same bindings.
class PortalShortcuts final : public Input {
  public:
    static constexpr int kCallTimeoutMilliseconds = 2000;
    static constexpr const char* kSessionToken = "lumora";

    // Nothing when the session bus has no portal offering global shortcuts.
    static std::unique_ptr<PortalShortcuts> connect(QDBusConnection bus, LogFunction log);
    ~PortalShortcuts() override;

    HotKeyRegistration registerHotKey(std::uint32_t, std::uint32_t, std::uint32_t) override {
        return {1, kNoHotKey};  // keys go by name here
    }
    void unregisterHotKey(HotKeyHandle /*handle*/) override {}
    void setHotKeyHandler(HotKeyHandler handler) override { pressed_ = std::move(handler); }
    [[nodiscard]] bool bindsByName() const override { return true; }
    // Binds once the session exists; the portal keeps a session's bindings, so later calls
    // (after recording, which the desktop owns here) change nothing.
    void bindByName(const std::vector<NamedShortcut>& shortcuts) override;
    void setTriggersHandler(const TriggersHandler& handler) override { triggers_ = handler; }

    bool startTap(TapHandler /*handler*/) override { return false; }
    void enableTap(bool /*enabled*/) override {}
    void stopTap() override {}
    [[nodiscard]] bool isTrusted() const override { return true; }
    void promptForTrust() override {}

  private:
    using Continuation = std::function<void(const QVariantMap& results)>;

    PortalShortcuts(QDBusConnection bus, LogFunction log);
    void createSession();
    void bind();
    // Calls a portal method that answers through a Request object; `then` runs with the
    // results of a successful answer.
    void request(const QString& method, const QVariantList& args, Continuation then);
    void response(const QDBusMessage& message);
    void activated(const QDBusMessage& message);
    void reportTriggers(const QVariant& shortcuts);
    void ownerChanged(bool present);

    QDBusConnection bus_;
    LogFunction log_;
    std::unique_ptr<LogindSignal> responses_;
    std::unique_ptr<LogindSignal> activations_;
    std::unique_ptr<LogindSignal> changes_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::map<QString, Continuation> waiting_;  // request path -> what its answer continues
    std::map<QString, QDBusMessage> early_;    // answers that came before their call returned
    QString session_;
    std::vector<NamedShortcut> shortcuts_;
    bool bound_ = false;
    int requests_ = 0;
    HotKeyHandler pressed_;
    TriggersHandler triggers_;
};

}  // namespace lumora::lx
