#include <unistd.h>

#include <array>

#include "LogindBus.h"
#include "logind/LidSwitchInhibitor.h"
#include "logind/LinuxLidSensor.h"
#include "logind/LogindBacklightWriter.h"
#include "logind/LogindPower.h"
#include "logind/LogindSystemEvents.h"

namespace lumora::test {
namespace {

const QString kSession = QStringLiteral("org.freedesktop.login1.Session");

std::string text(const PowerRequest& r) {
    return std::to_string(r.started) + " " + r.error;
}

TEST_F(LogindTest, InhibitorsAreHeldUntilReleased) {
    auto logind = bus_->client(log_);
    lx::LogindPower power(logind);
    lx::LidSwitchInhibitor lid(logind);
    auto idle = power.inhibitIdleSleep("Lumora: external display connected");
    EXPECT_NE(idle, nullptr);
    EXPECT_TRUE(lid.take());
    EXPECT_TRUE(lid.take());  // already held: no second lock
    EXPECT_EQ(bus_->calls(kLogindPath, "Inhibit"),
              (Calls{{"idle", "Lumora", "Lumora: external display connected", "block"},
                     {"handle-lid-switch", "Lumora", "Lumora handles the lid", "block"}}));

    idle.reset();
    EXPECT_TRUE(bus_->inhibited()) << "the lid switch lock is still held";
    lid.release();
    EXPECT_TRUE(spinUntil([&] { return !bus_->inhibited(); })) << "still inhibited";
    EXPECT_EQ(log_, Lines{});
}

TEST_F(LogindTest, SuspendSessionAndBacklightCallsCarryExactArguments) {
    const QString session = bus_->addSession("c1");
    bus_->call(
        kLogindPath, "AddMethod",
        {kManager, "GetSessionByPID", "u", "o", "ret = '/org/freedesktop/login1/session/c1'"});
    bus_->call(session, "AddMethod", {kSession, "SetBrightness", "ssu", "", ""});
    auto logind = bus_->client(log_, "c9");
    int wakes = 0;
    lx::LogindPower power(logind, {{}, [&] { ++wakes; }});

    EXPECT_EQ(text(power.sleepSystem()), "1 ");
    power.declareUserActivity("Lumora: lid opened");
    EXPECT_TRUE(lx::LogindBacklightWriter(logind).setBrightness("intel_backlight", 4321));
    EXPECT_EQ(bus_->calls(kLogindPath, "Suspend"), (Calls{{"false"}}));
    // Looked up once, for this process.
    EXPECT_EQ(bus_->calls(kLogindPath, "GetSessionByPID"), (Calls{{std::to_string(::getpid())}}));
    EXPECT_EQ(bus_->calls(session, "SetIdleHint"), (Calls{{"false"}}));
    EXPECT_EQ(bus_->calls(session, "SetBrightness"),
              (Calls{{"backlight", "intel_backlight", "4321"}}));
    EXPECT_EQ(wakes, 1);

    // No session for our process id: the environment's session, else logind's "auto".
    const QString named = bus_->addSession("c2");
    const QString automatic = bus_->addSession("auto");
    bus_->call(
        kLogindPath, "AddMethod",
        {kManager, "GetSessionByPID", "u", "o", "raise dbus.exceptions.DBusException('no')"});
    lx::LogindPower(bus_->client(log_, "c2")).declareUserActivity("test");
    lx::LogindPower(bus_->client(log_, "")).declareUserActivity("test");
    EXPECT_EQ(bus_->calls(kLogindPath, "GetSession"), (Calls{{"c2"}}));
    EXPECT_EQ(bus_->calls(named, "SetIdleHint"), (Calls{{"false"}}));
    EXPECT_EQ(bus_->calls(automatic, "SetIdleHint"), (Calls{{"false"}}));
    EXPECT_EQ(log_, Lines{});
}

TEST_F(LogindTest, RefusalsComeBackWithLogindsMessage) {
    const QString refuse =
        "raise dbus.exceptions.DBusException('Access denied by policy', "
        "name='org.freedesktop.DBus.Error.AccessDenied')";
    bus_->call(kLogindPath, "AddMethod", {kManager, "Suspend", "b", "", refuse});
    bus_->call(kLogindPath, "AddMethod", {kManager, "Inhibit", "ssss", "h", refuse});
    auto logind = bus_->client(log_);
    lx::LogindPower power(logind);

    EXPECT_EQ(text(power.sleepSystem()), "0 Access denied by policy");
    EXPECT_EQ(power.inhibitIdleSleep("reason"), nullptr);
    EXPECT_EQ(log_, (Lines{"logind: Suspend failed: Access denied by policy",
                           "logind: Inhibit failed: Access denied by policy"}));
}

TEST(LogindAbsent, EveryPartReportsItselfAbsentAfterOneLine) {
    if (const std::string why = LogindBus::missing(); !why.empty()) GTEST_SKIP() << why;
    const LogindBus bus(/*withLogind=*/false);
    ASSERT_EQ(bus.failure, "");
    Lines log;
    auto logind = bus.client(log);
    const TempDir sys;
    int wakes = 0;
    lx::LogindPower power(logind, {{}, [&] { ++wakes; }});
    lx::LidSwitchInhibitor lidSwitch(logind);
    lx::LinuxLidSensor lid(logind, {sys / "iio", sys / "input"});
    lx::LogindBacklightWriter backlight(logind);
    lx::LogindSystemEvents events(logind);

    EXPECT_FALSE(logind->available() || power.available() || lidSwitch.available() ||
                 lid.available() || backlight.available() || events.available());
    EXPECT_EQ(power.inhibitIdleSleep("reason"), nullptr);
    EXPECT_EQ(text(power.sleepSystem()), "0 logind is not available");
    power.declareUserActivity("reason");
    EXPECT_EQ(wakes, 1);  // the display server still wakes the displays
    EXPECT_FALSE(lidSwitch.take());
    EXPECT_EQ(lid.open({}), std::nullopt);
    EXPECT_EQ(lid.read(true), LidReading{});
    EXPECT_FALSE(backlight.setBrightness("intel_backlight", 1));
    EXPECT_NE(events.addObserver(SystemEvent::didWake, [] {}), 0u);
    EXPECT_EQ(log, (Lines{"logind: not available (The name org.freedesktop.login1 was not "
                          "provided by any .service files)"}));
}

TEST(LogindDisplaySleep, ASecondRequestWhileTheDisplaysGoDownDoesNothing) {
    Lines log;
    auto logind = offlineClient(log);
    EXPECT_EQ(text(lx::LogindPower(logind).sleepDisplays()), "0 display sleep is not available");

    double now = 100;
    int sleeps = 0;
    PowerRequest answer{true, {}};
    const auto hook = [&] {
        ++sleeps;
        return answer;
    };
    lx::LogindPower power(logind, {hook, {}}, [&] { return now; });
    EXPECT_EQ(text(power.sleepDisplays()), "1 ");
    now += 1;
    EXPECT_EQ(text(power.sleepDisplays()), "1 ");
    EXPECT_EQ(sleeps, 1);
    now += 5;  // down by now
    EXPECT_EQ(text(power.sleepDisplays()), "1 ");
    EXPECT_EQ(sleeps, 2);
    power.declareUserActivity("key");  // the user woke them: a new request goes through
    answer = {false, "DPMS is not available"};
    EXPECT_EQ(text(power.sleepDisplays()), "0 DPMS is not available");
    EXPECT_EQ(text(power.sleepDisplays()), "0 DPMS is not available");  // nothing left pending
    EXPECT_EQ(sleeps, 4);
}

TEST_F(LogindTest, WakeComesFromPrepareForSleepFalse) {
    lx::LogindSystemEvents events(bus_->client(log_));
    ASSERT_TRUE(events.available());
    int wakes = 0, screens = 0, removed = 0;
    events.addObserver(SystemEvent::didWake, [&] { ++wakes; });
    events.addObserver(SystemEvent::screensDidWake, [&] { ++screens; });
    events.removeObserver(events.addObserver(SystemEvent::didWake, [&] { ++removed; }));
    events.removeObserver(12345);

    for (const bool starting : {true, false}) {
        bus_->call(kLogindPath, "EmitSignal",
                   {kManager, "PrepareForSleep", "b", QVariantList{starting}});
    }
    EXPECT_TRUE(spinUntil([&] { return wakes > 0; }));
    (void)spinUntil([] { return false; }, std::chrono::milliseconds(100));  // nothing more
    EXPECT_EQ((std::array{wakes, screens, removed}), (std::array{1, 0, 0}));
}

}  // namespace
}  // namespace lumora::test
