// Global shortcuts through the desktop portal: what Lumora asks of it, and a press coming back.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <thread>

#include "backends/linux/wayland/support/ServerProcess.h"
#include "input/Hotkeys.h"
#include "input/KeyCodes.h"
#include "input/ShortcutMap.h"
#include "portal/PortalShortcuts.h"
#include "sim/VirtualScheduler.h"
#include "support/TestSupport.h"

namespace lumora::lx {
namespace {

using Lines = std::vector<std::string>;

bool spinUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

class PortalTest : public ::testing::Test {
  protected:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "test_linux_portal";
        static char* argv[] = {name, nullptr};
        static auto* app = new QCoreApplication(argc, argv);
        (void)app;
        if (!wltest::hasDbusmock()) GTEST_SKIP() << "python3-dbusmock is not installed";
        ASSERT_EQ(bus_.problem(), "");
        connection_ = QStringLiteral("portal-test-%1").arg(++count_);
        ASSERT_TRUE(
            QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), connection_)
                .isConnected());
    }
    void TearDown() override { QDBusConnection::disconnectFromBus(connection_); }

    QDBusConnection bus() const { return QDBusConnection(connection_); }
    void startPortal(const std::string& parameters = "{}") {
        portal_.emplace(std::vector<std::string>{"/usr/bin/python3", "-m", "dbusmock", "--template",
                                                 LUMORA_PORTAL_FIXTURES "/global_shortcuts.py",
                                                 "--parameters", parameters},
                        std::vector<std::string>{"DBUS_SESSION_BUS_ADDRESS=" + bus_.address()},
                        bus_.dir() / "portal.out");
        ASSERT_TRUE(spinUntil([&] {
            return bus().interface()->isServiceRegistered("org.freedesktop.portal.Desktop").value();
        })) << test::readFile(bus_.dir() / "portal.out");
    }
    QDBusMessage mock(const QString& method, const QVariantList& args = {}) {
        auto call = QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop",
                                                   "/org/freedesktop/portal/desktop",
                                                   "org.freedesktop.DBus.Mock", method);
        call.setArguments(args);
        return bus().call(call);
    }

    static inline int count_ = 0;
    wltest::PrivateBus bus_;
    QString connection_;
    std::optional<wltest::ChildProcess> portal_;
    Lines log_;
};

TEST_F(PortalTest, BindsEveryActionByNameWithItsKeysAndAPressComesBack) {
    EXPECT_EQ(PortalShortcuts::connect(bus(), [](const std::string&) {}), nullptr)
        << "no portal on the bus yet";
    startPortal();
    auto portal = PortalShortcuts::connect(bus(), [&](const std::string& l) { log_.push_back(l); });
    ASSERT_NE(portal, nullptr);

    sim::VirtualScheduler clock;
    const test::TempDir dir;
    Log log{Log::Options{dir / "lumora.log", test::fixedLocalTime, nullptr}};
    Hotkeys hotkeys(*portal, clock, log);
    std::vector<ShortcutAction> pressed;
    hotkeys.onAction = [&](ShortcutAction a) { pressed.push_back(a); };
    std::map<std::string, std::string> triggers;
    portal->setTriggersHandler([&](const auto& t) { triggers = t; });
    hotkeys.registerShortcuts(defaultShortcuts());
    ASSERT_TRUE(spinUntil([&] { return !triggers.empty(); }))
        << test::readFile(bus_.dir() / "portal.out");

    const QStringList calls = mock("GetTestLog").arguments().value(0).toStringList();
    const QString session = "/org/freedesktop/portal/desktop/session/1_2/lumora";
    EXPECT_EQ(calls,
              (QStringList{
                  "CreateSession lumora",
                  "BindShortcuts " + session +
                      " brightnessUp [CTRL+ALT+LOGO+Up] Ярче (монитор под курсором)",
                  "BindShortcuts " + session +
                      " brightnessDown [CTRL+ALT+LOGO+Down] Темнее (монитор под курсором)",
                  "BindShortcuts " + session +
                      " dimToBlack [CTRL+ALT+LOGO+b] Погасить / вернуть монитор под курсором",
                  "BindShortcuts " + session + " toggleBuiltin [] Встроенный экран вкл/выкл",
                  "BindShortcuts " + session +
                      " toggleHiDPI [CTRL+ALT+LOGO+h] HiDPI вкл/выкл (монитор под курсором)",
                  "BindShortcuts " + session + " sleepDisplays [] Усыпить все экраны",
              }));
    EXPECT_EQ(triggers.at("brightnessDown"), "desktop: CTRL+ALT+LOGO+Down");
    EXPECT_EQ(triggers.at("sleepDisplays"), "");
    EXPECT_EQ(log_, Lines{"shortcuts: desktop portal session " + session.toStdString()});

    // A second registration (after a recording, say) does not bind again.
    hotkeys.registerShortcuts(defaultShortcuts());
    mock("Activate", {"brightnessDown"});
    ASSERT_TRUE(spinUntil([&] {
        clock.runDue();
        return !pressed.empty();
    }));
    EXPECT_EQ(pressed, std::vector<ShortcutAction>{ShortcutAction::brightnessDown});
    EXPECT_EQ(mock("GetTestLog").arguments().value(0).toStringList().size(), calls.size());

    // The desktop restarts its portal: a new session with the same bindings, and presses.
    portal_.reset();
    startPortal();
    ASSERT_TRUE(spinUntil([&] {
        return mock("GetTestLog").arguments().value(0).toStringList().size() == calls.size();
    }));
    EXPECT_EQ(mock("GetTestLog").arguments().value(0).toStringList(), calls);
    mock("Activate", {"dimToBlack"});
    ASSERT_TRUE(spinUntil([&] {
        clock.runDue();
        return pressed.size() == 2;
    }));
    EXPECT_EQ(pressed.back(), ShortcutAction::dimToBlack);
    EXPECT_EQ(log_, (Lines{"shortcuts: desktop portal session " + session.toStdString(),
                           "shortcuts: the desktop portal left the bus; the shortcuts wait for it",
                           "shortcuts: the desktop portal is back; binding the shortcuts again",
                           "shortcuts: desktop portal session " + session.toStdString()}));
}

// A portal answering with something else where the list belongs: no triggers, no crash, and
// presses still arrive.
TEST_F(PortalTest, AGarbledAnswerReportsNoTriggers) {
    startPortal(R"({"garbage": true})");
    auto portal = PortalShortcuts::connect(bus(), [&](const std::string& l) { log_.push_back(l); });
    ASSERT_NE(portal, nullptr);
    std::vector<std::uint32_t> pressed;
    portal->setHotKeyHandler([&](std::uint32_t id) { pressed.push_back(id); });
    bool reported = false;
    portal->setTriggersHandler([&](const auto&) { reported = true; });
    portal->bindByName({NamedShortcut{"dimToBlack", "Погасить", false, 0, 0, 3}});
    ASSERT_TRUE(spinUntil(
        [&] { return mock("GetTestLog").arguments().value(0).toStringList().size() == 2; }));
    mock("Activate", {"dimToBlack"});
    ASSERT_TRUE(spinUntil([&] { return !pressed.empty(); }));
    EXPECT_EQ(pressed, std::vector<std::uint32_t>{3});
    EXPECT_FALSE(reported);
}

TEST(PortalTrigger, ModifiersInTheDesktopsOrderThenTheKeysymName) {
    EXPECT_EQ(portalTrigger(kKeyUpArrow, kMaskControl | kMaskOption | kMaskCommand),
              "CTRL+ALT+LOGO+Up");
    EXPECT_EQ(portalTrigger(kKeySpace, kMaskShift), "SHIFT+space");
    EXPECT_EQ(portalTrigger(kKeyF1, 0), "F1");
    EXPECT_EQ(portalTrigger(0x34, kMaskControl), "");  // a code with no key
}

}  // namespace
}  // namespace lumora::lx
