// The lid controller on the simulated machine, in virtual time: what reaches the displays, the
// backlight, the power tool and the event log for a lid that opens and closes.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/log/TestLog.h"
#include "display/Displays.h"
#include "lid/LidController.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using test::Lines;

constexpr const char* kSaved = LidController::kSavedBrightnessKey;

// The default world's laptop panel alone, or with the office monitor (then at backlight 0.5).
sim::World laptop(double backlight = 0.7, sim::WorldLid lid = {}, bool external = false) {
    auto world = sim::defaultWorld();
    world.displays.resize(external ? 2 : 1);
    world.displays[0].backlight = backlight;
    world.lid = lid;
    return world;
}
const sim::World kLaptopAndExternal = laptop(0.5, {}, true);

std::string startLine(const std::string& facts) {
    return "lid: start, " + facts + ", config " + LidConfig{}.describe();
}

// A sensor whose every answer the test scripts, for what the simulated one never does: an
// open that fails with a status, a lid that only has a switch, a device that does not answer.
class ScriptedSensor final : public LidSensor {
  public:
    std::optional<std::int32_t> openStatus = 0;
    std::map<bool, LidReading> readings;  // by `fresh`
    ChangeHandler onChange;

    std::optional<std::int32_t> open(ChangeHandler handler) override {
        onChange = std::move(handler);
        return openStatus;
    }
    LidReading read(bool fresh) override { return readings[fresh]; }
};

// A machine whose power requests all fail.
class NoPowerTool final : public Power {
  public:
    std::unique_ptr<SleepInhibition> inhibitIdleSleep(const std::string&) override {
        return nullptr;
    }
    PowerRequest sleepDisplays() override { return {false, "/usr/bin/pmset failed: no such file"}; }
    PowerRequest sleepSystem() override { return {false, "/usr/bin/pmset failed: no such file"}; }
    void declareUserActivity(const std::string&) override {}
};

// One machine, its defaults and log, and the controller under test. Time starts at 1000.
struct Rig : test::TestLog {
    explicit Rig(const sim::World& world, LidSensor* sensor = nullptr, Power* power = nullptr)
        : machine(world, scheduler),
          displays(machine.displayServer(), defaults, log),
          lid(LidController::create(
              LidConfig{},
              {scheduler, machine.displayServer(), displays, machine.backlight(),
               power ? *power : machine.power(), sensor ? *sensor : machine.lidSensor(),
               machine.systemEvents(), defaults, log})) {}

    // The lid moves and the sensor reports it; the report is handled at once.
    void moveLid(std::int64_t angle) {
        machine.setLidAngle(angle);
        scheduler.runDue();
    }
    nlohmann::json panel() {
        const nlohmann::json state = machine.state();
        for (const auto& d : state["displays"])
            if (d["id"] == 1) return d;
        return {};
    }
    nlohmann::json power() { return machine.state()["power"]; }

    sim::VirtualScheduler scheduler;
    MemoryDefaults defaults;
    sim::SimMachine machine;
    Displays displays;
    std::shared_ptr<LidController> lid;
};

TEST(LidController, ClosedWithAnExternalMonitorSwitchesThePanelOffAndShutdownBackOn) {
    Rig rig(kLaptopAndExternal);
    int changes = 0;
    rig.lid->setOnChange([&] { ++changes; });
    rig.lid->start();
    EXPECT_EQ(rig.logged(), (Lines{startLine("angle 110, external 1, built-in online, sensor ok"),
                                   "lid: mode unknown -> open (angle 110, external 1)"}));
    rig.moveLid(0);
    rig.scheduler.advance(12.0);
    EXPECT_EQ(rig.panel()["enabled"], false);
    EXPECT_EQ(rig.logged(), (Lines{"lid: mode open -> closedExternal (angle 0, external 1)",
                                   "display 1: disconnected (0)"}))
        << "the offline panel is left alone";

    rig.moveLid(100);
    EXPECT_EQ(rig.panel()["enabled"], true);
    EXPECT_EQ(rig.logged(), (Lines{"lid: mode closedExternal -> open (angle 100, external 1)",
                                   "display 1: connected (0)"}));
    EXPECT_EQ(rig.power()["userActivity"], 1);
    rig.scheduler.advance(LidController::kSecondWakeDelay);
    EXPECT_EQ(rig.power()["userActivity"], 2);
    EXPECT_EQ(changes, 3);

    // Shutdown never leaves the machine without its panel, although the retry is due again.
    rig.moveLid(0);
    rig.scheduler.advance(10.0);
    rig.logged();
    rig.lid->shutdown();
    rig.scheduler.advance(10.0);
    EXPECT_EQ(rig.panel()["enabled"], true);
    EXPECT_EQ(rig.logged(), (Lines{"display 1: connected (0)"}));
}

TEST(LidController, ClosedAloneDimsSleepsAndWakesAndOpeningRestoresTheExactBrightness) {
    Rig rig(laptop());
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(2.0);  // closed alone at 1002: dimmed and the first display sleep
    EXPECT_EQ(rig.panel()["backlight"], 0.0);
    EXPECT_EQ(rig.defaults.number(kSaved), static_cast<double>(0.7f));
    EXPECT_EQ(rig.power()["displaySleeps"], 1);
    rig.machine.setAsleep(1, false);  // a HID tickle wakes the panel
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.power()["displaySleeps"], 1) << "the first tool still runs";
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.power()["displaySleeps"], 2);
    rig.scheduler.advance(10.0);
    rig.machine.simulateWake();
    rig.scheduler.runDue();
    rig.scheduler.advance(60.0);
    EXPECT_EQ(rig.power()["systemSleeps"], 1);
    EXPECT_EQ(rig.logged(),
              (Lines{startLine("angle 110, external 0, built-in online, sensor ok"),
                     "lid: mode unknown -> open (angle 110, external 0)",
                     "lid: mode open -> closedAlone (angle 0, external 0)",
                     "lid: lid closed, nothing external: display sleep",
                     "lid: display woke with the lid closed (HID tickle): display sleep again "
                     "(1 so far)",
                     "system woke (lid closed, angle 0)",
                     "lid: woke with the lid closed and nothing external: display stays dark, "
                     "system sleep in 60 s",
                     "lid: lid closed 600 s without an external display: system sleep"}));

    rig.moveLid(110);
    EXPECT_EQ(rig.panel()["backlight"], 0.7);
    EXPECT_FALSE(rig.defaults.contains(kSaved));
    EXPECT_EQ(rig.logged(), (Lines{"lid: mode closedAlone -> open (angle 110, external 0)"}));
    // Shutdown gives the brightness back too, and nothing is done after it.
    rig.moveLid(0);
    rig.scheduler.advance(2.0);
    rig.lid->shutdown();
    rig.scheduler.advance(10.0);
    EXPECT_EQ(rig.panel()["backlight"], 0.7);
    EXPECT_FALSE(rig.defaults.contains(kSaved));
    // A controller gone before its delayed wake leaves the second nudge undone.
    const auto nudges = rig.power()["userActivity"];
    rig.lid.reset();
    rig.scheduler.advance(5.0);
    EXPECT_EQ(rig.power()["userActivity"], nudges);
}

TEST(LidController, ABrightnessLeftBehindIsRestoredAtStartWhenOpen) {
    struct Case {
        nlohmann::json stored;
        double backlight;  // afterwards
        bool keyRemains;
    };
    for (const Case& c :
         {Case{0.35, 0.35, false}, Case{7.5, 1.0, false}, Case{"bright", 0.1, true}}) {
        SCOPED_TRACE(c.stored.dump());
        Rig rig(laptop(0.1));
        rig.defaults.set(kSaved, c.stored);
        rig.lid->start();
        EXPECT_EQ(rig.panel()["backlight"], c.backlight);
        EXPECT_EQ(rig.defaults.contains(kSaved), c.keyRemains);
    }
    // Closed at start: the dim is the machine's to undo when the lid opens.
    Rig closed(laptop(0.1, {.angle = 0}));
    closed.defaults.setNumber(kSaved, 0.6);
    closed.lid->start();
    closed.scheduler.advance(2.0);
    EXPECT_EQ(closed.defaults.number(kSaved), 0.6) << "the first, real brightness is kept";
    closed.moveLid(90);
    EXPECT_EQ(closed.panel()["backlight"], 0.6);
}

TEST(LidController, AFailedPowerToolIsLoggedAndRetriedLater) {
    NoPowerTool power;
    Rig rig(laptop(), nullptr, &power);
    rig.lid->start();
    rig.logged();
    rig.moveLid(0);
    rig.scheduler.advance(3.0);
    EXPECT_EQ(rig.logged(), (Lines{"lid: mode open -> closedAlone (angle 0, external 0)",
                                   "lid: lid closed, nothing external: display sleep",
                                   "lid: /usr/bin/pmset failed: no such file",
                                   "lid: display woke with the lid closed (HID tickle): display "
                                   "sleep again (1 so far)",
                                   "lid: /usr/bin/pmset failed: no such file"}));
}

TEST(LidController, WithoutAWorkingSensorTheLidCountsAsOpen) {
    for (const sim::WorldLid& lid :
         {sim::WorldLid{.sensor = false, .angle = 0}, sim::WorldLid{.device = false, .angle = 0}}) {
        Rig rig(laptop(0.7, lid));
        rig.lid->start();
        rig.moveLid(0);
        rig.scheduler.advance(10.0);
        rig.machine.simulateWake();
        rig.scheduler.runDue();
        EXPECT_EQ(rig.lid->angle(), std::nullopt);
        EXPECT_EQ(rig.lid->machine().mode(), LidMode::open);
        EXPECT_EQ(rig.logged(), (Lines{startLine(std::string("angle none, external 0, built-in "
                                                             "online, sensor ") +
                                                 (lid.sensor ? "ok" : "MISSING")),
                                       "lid: mode unknown -> open (angle ?, external 0)",
                                       "system woke (lid open, angle ?)"}));
    }

    ScriptedSensor sensor;
    sensor.openStatus = static_cast<std::int32_t>(0xE00002C5);
    Rig failed(laptop(), &sensor);
    failed.lid->start();
    EXPECT_EQ(failed.logged(),
              (Lines{"lid: sensor open failed (-536870203)",
                     startLine("angle none, external 0, built-in online, sensor ok"),
                     "lid: mode unknown -> open (angle ?, external 0)"}));
}

TEST(LidController, AFailedReadKeepsTheLastAngleAndALidSwitchFeedsOnlyClosedOrOpen) {
    ScriptedSensor sensor;
    sensor.readings = {{true, LidReading{95, std::nullopt}}};
    Rig rig(laptop(), &sensor);
    rig.lid->start();
    EXPECT_EQ(rig.lid->angle(), 95);
    sensor.readings = {};
    rig.scheduler.advance(5.0);
    EXPECT_EQ(rig.lid->angle(), 95);
    sensor.onChange(LidReading{42, std::nullopt});
    EXPECT_EQ(rig.lid->angle(), 42);

    ScriptedSensor lidSwitch;
    lidSwitch.readings = {{true, LidReading{std::nullopt, false}}};
    Rig switched(laptop(), &lidSwitch);
    switched.lid->start();
    EXPECT_EQ(switched.lid->machine().mode(), LidMode::open);
    lidSwitch.onChange(LidReading{std::nullopt, true});
    switched.scheduler.advance(2.0);
    EXPECT_EQ(switched.lid->machine().mode(), LidMode::closedAlone);
    EXPECT_EQ(switched.lid->angle(), std::nullopt);
}

TEST(LidController, EveryFifthTickPollsTheSensorForUnreportedChanges) {
    Rig rig(laptop());
    rig.lid->start();
    rig.machine.setLidAngle(2, /*reported=*/false);
    rig.scheduler.advance(4.0);
    EXPECT_EQ(rig.lid->angle(), 110);
    rig.scheduler.advance(1.0);  // the fifth tick, at 1005
    EXPECT_EQ(rig.lid->angle(), 2);
    rig.scheduler.advance(2.0);  // and acted on once debounced
    EXPECT_EQ(rig.lid->machine().mode(), LidMode::closedAlone);
}

TEST(LidController, UpdatesAndReconfigurationsAreActedOnAtOnce) {
    Rig rig(kLaptopAndExternal);
    rig.machine.setOnline(2, false);
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(2.0);
    ASSERT_EQ(rig.lid->machine().mode(), LidMode::closedAlone);
    rig.logged();
    const std::size_t pending = rig.scheduler.pendingCount();
    rig.machine.setOnline(2, true);  // begin, then add: one tick
    EXPECT_EQ(rig.scheduler.pendingCount(), pending + 1);
    rig.scheduler.runDue();
    EXPECT_EQ(rig.logged(), (Lines{"lid: mode closedAlone -> closedExternal (angle 0, external 1)",
                                   "display 1: disconnected (0)"}));
    EXPECT_EQ(rig.panel()["backlight"], 0.5) << "the dim is undone";

    LidConfig config;
    config.turnOffPanelWithExternal = false;
    config.sleepDelay = 30.5;
    rig.lid->update(config);
    EXPECT_EQ(rig.logged(), (Lines{"lid: config " + config.describe(),
                                   "lid: mode closedExternal -> closedAlone (angle 0, external 1)",
                                   "display 1: connected (0)"}));
}

}  // namespace
}  // namespace lumora
