// The lid controller on the simulated machine, in virtual time: what reaches the displays, the
// backlight, the power tool and the event log for a lid that opens and closes.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "display/Displays.h"
#include "lid/HidRead.h"
#include "lid/LidController.h"
#include "log/Log.h"
#include "sim/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"
#include "support/TestSupport.h"

namespace lumora {
namespace {

constexpr const char* kSaved = LidController::kSavedBrightnessKey;
constexpr const char* kDefaultConfig =
    "config closeAngle=5 openAngle=15 closeDebounce=1.5 sleepDelay=600 wakeSleepDelay=60 "
    "panelRetry=5 resleepInterval=1 turnOffPanelWithExternal=true dimWhenClosed=true "
    "disconnectBuiltinWhenExternal=false";

// A laptop with its panel alone; `lid` is the world's lid entry.
std::string laptop(const std::string& lid = R"({})", double backlight = 0.7) {
    return R"({ "lid": )" + lid + R"(, "displays": [ { "id": 1, "builtin": true, "backlight": )" +
           std::to_string(backlight) +
           R"(, "modes": [ { "id": 10, "width": 1512, "height": 982, "pixelWidth": 3024,
               "pixelHeight": 1964, "refresh": 120 } ] } ] })";
}

// The panel plus an office monitor; the lid reads 110 degrees.
const std::string kLaptopAndExternal = R"({ "displays": [
  { "id": 1, "builtin": true, "backlight": 0.5,
    "modes": [ { "id": 10, "width": 1512, "height": 982, "pixelWidth": 3024, "pixelHeight": 1964, "refresh": 120 } ] },
  { "id": 2, "vendor": 4268,
    "modes": [ { "id": 20, "width": 2560, "height": 1440, "pixelWidth": 2560, "pixelHeight": 1440, "refresh": 60 } ] } ] })";

// A sensor whose every answer the test scripts; it records the reads it is asked for.
class ScriptedSensor final : public LidSensor {
  public:
    std::optional<std::int32_t> openStatus = 0;
    std::vector<HidElement> list;
    std::map<std::pair<std::uint64_t, bool>, std::int64_t> values;  // (handle, askDevice)
    std::vector<std::pair<std::uint64_t, bool>> reads;
    ValueHandler onValue;

    std::optional<std::int32_t> open(ValueHandler handler) override {
        onValue = std::move(handler);
        return openStatus;
    }
    std::vector<HidElement> elements() const override { return list; }
    std::optional<std::int64_t> getValue(const HidElement& element, bool askDevice) override {
        reads.emplace_back(element.handle, askDevice);
        auto it = values.find({element.handle, askDevice});
        if (it == values.end()) return std::nullopt;
        return it->second;
    }
};

// A machine whose power tool is missing: no child process can be launched.
class NoPowerTool final : public Power {
  public:
    AssertionID createAssertion(const std::string&, const std::string&) override { return 0; }
    void releaseAssertion(AssertionID) override {}
    void declareUserActivity(const std::string&) override {}
    Spawned spawn(const std::string&, const std::vector<std::string>&) override {
        return {nullptr, "no such file"};
    }
};

// One machine, its defaults and log, and the controller under test. Time starts at 1000.
struct Rig {
    explicit Rig(const std::string& world, LidSensor* sensorOverride = nullptr,
                 Power* powerOverride = nullptr)
        : log(Log::Options{dir / "Lumora.log", test::fixedLocalTime, nullptr}),
          machine(parsed(world), scheduler),
          displays(machine.displayServer(), defaults, log),
          lid(LidController::create(
              LidConfig{}, {scheduler, machine.displayServer(), displays, machine.backlight(),
                            powerOverride ? *powerOverride : machine.power(),
                            sensorOverride ? *sensorOverride : machine.lidSensor(),
                            machine.systemEvents(), defaults, log})) {}

    static sim::World parsed(const std::string& text) {
        auto result = sim::parseWorld(text);
        EXPECT_TRUE(result.world) << result.error;
        return result.world.value_or(sim::World{});
    }

    // Lines logged since the last call, without their time stamps.
    std::vector<std::string> lines() {
        log.flush();
        auto all = log.tail(1000);
        std::vector<std::string> fresh;
        for (std::size_t i = seen; i < all.size(); ++i)
            fresh.push_back(all[i].substr(std::string(test::kFixedStamp).size() + 1));
        seen = all.size();
        return fresh;
    }
    // The lid moves and the sensor reports it; the report is handled at once.
    void moveLid(std::int64_t angle) {
        machine.setLidAngle(angle);
        scheduler.runDue();
    }
    nlohmann::json display(DisplayID id) {
        const nlohmann::json state = machine.state();
        for (const auto& d : state["displays"])
            if (d["id"] == id) return d;
        return {};
    }
    nlohmann::json power() { return machine.state()["power"]; }

    test::TempDir dir;
    Log log;
    sim::VirtualScheduler scheduler;
    sim::MemoryDefaults defaults;
    sim::SimMachine machine;
    Displays displays;
    std::shared_ptr<LidController> lid;
    std::size_t seen = 0;
};

std::string startLine(const std::string& facts) {
    return "lid: start, " + facts + ", " + kDefaultConfig;
}

TEST(LidController, ClosedWithAnExternalMonitorSwitchesThePanelOffAndBackOn) {
    Rig rig(kLaptopAndExternal);
    int changes = 0;
    rig.lid->setOnChange([&] { ++changes; });
    rig.lid->start();
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               startLine("angle 110, external 1, built-in online, sensor ok"),
                               "lid: mode unknown -> open (angle 110, external 1)"}));

    rig.moveLid(0);
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.display(1)["enabled"], true) << "still debouncing";
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.display(1)["enabled"], false);
    EXPECT_EQ(rig.lines(),
              (std::vector<std::string>{"lid: mode open -> closedExternal (angle 0, external 1)",
                                        "display 1: disconnected (0)"}));
    rig.scheduler.advance(10.0);
    EXPECT_TRUE(rig.lines().empty()) << "the offline panel is left alone";

    rig.moveLid(100);
    EXPECT_EQ(rig.display(1)["enabled"], true);
    EXPECT_EQ(rig.lines(),
              (std::vector<std::string>{"lid: mode closedExternal -> open (angle 100, external 1)",
                                        "display 1: connected (0)"}));
    EXPECT_EQ(rig.power()["userActivity"], 1);
    rig.scheduler.advance(LidController::kSecondWakeDelay);
    EXPECT_EQ(rig.power()["userActivity"], 2);
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(rig.lid->angle(), 100);
}

TEST(LidController, ClosedAloneDimsToZeroAndOpeningRestoresTheEarlierBrightness) {
    Rig rig(laptop());
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(2.0);
    EXPECT_EQ(rig.display(1)["backlight"], 0.0);
    EXPECT_EQ(rig.defaults.number(kSaved), static_cast<double>(0.7f));
    EXPECT_EQ(rig.power()["displaySleeps"], 1);

    rig.moveLid(110);
    EXPECT_EQ(rig.display(1)["backlight"], 0.7);
    EXPECT_FALSE(rig.defaults.contains(kSaved));
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               startLine("angle 110, external 0, built-in online, sensor ok"),
                               "lid: mode unknown -> open (angle 110, external 0)",
                               "lid: mode open -> closedAlone (angle 0, external 0)",
                               "lid: lid closed, nothing external: display sleep",
                               "lid: mode closedAlone -> open (angle 110, external 0)"}));
}

TEST(LidController, ABrightnessLeftBehindIsRestoredAtStartWhenOpen) {
    struct Case {
        nlohmann::json stored;
        double backlight;  // afterwards
        bool keyRemains;
    };
    for (const Case& c : {Case{0.35, 0.35, false}, Case{7.5, 1.0, false}, Case{-2, 0.0, false},
                          Case{"bright", 0.1, true}}) {
        SCOPED_TRACE(c.stored.dump());
        Rig rig(laptop("{}", 0.1));
        rig.defaults.set(kSaved, c.stored);
        rig.lid->start();
        EXPECT_EQ(rig.display(1)["backlight"], c.backlight);
        EXPECT_EQ(rig.defaults.contains(kSaved), c.keyRemains);
    }

    // Closed at start: the dim is the machine's to undo when the lid opens.
    Rig closed(laptop(R"({ "angle": 0 })", 0.1));
    closed.defaults.setNumber(kSaved, 0.6);
    closed.lid->start();
    closed.scheduler.advance(2.0);
    EXPECT_EQ(closed.defaults.number(kSaved), 0.6) << "the first, real brightness is kept";
    closed.moveLid(90);
    EXPECT_EQ(closed.display(1)["backlight"], 0.6);
}

TEST(LidController, DisplaySleepWaitsForThePreviousPowerToolToEnd) {
    Rig rig(laptop());
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(2.0);  // closed alone at 1002: the first display sleep
    rig.lines();
    rig.machine.setAsleep(1, false);  // a HID tickle wakes the panel
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.power()["displaySleeps"], 1) << "the first tool still runs";
    EXPECT_EQ(rig.lines(),
              (std::vector<std::string>{"lid: display woke with the lid closed (HID tickle): "
                                        "display sleep again (1 so far)"}));
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.power()["displaySleeps"], 2);
}

TEST(LidController, APowerToolThatCannotStartIsLoggedAndTriedAgain) {
    NoPowerTool power;
    Rig rig(laptop(), nullptr, &power);
    rig.lid->start();
    rig.lines();
    rig.moveLid(0);
    rig.scheduler.advance(3.0);
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               "lid: mode open -> closedAlone (angle 0, external 0)",
                               "lid: lid closed, nothing external: display sleep",
                               "lid: /usr/bin/pmset failed: no such file",
                               "lid: display woke with the lid closed (HID tickle): display "
                               "sleep again (1 so far)",
                               "lid: /usr/bin/pmset failed: no such file"}));
}

TEST(LidController, WithoutASensorTheLidCountsAsOpen) {
    Rig rig(laptop(R"({ "sensor": false, "angle": 0 })"));
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(10.0);
    EXPECT_EQ(rig.lid->machine().mode(), LidMode::open);
    EXPECT_EQ(rig.lid->angle(), std::nullopt);
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               startLine("angle none, external 0, built-in online, sensor MISSING"),
                               "lid: mode unknown -> open (angle ?, external 0)"}));

    Rig noDevice(laptop(R"({ "device": false, "angle": 0 })"));
    noDevice.lid->start();
    noDevice.scheduler.advance(10.0);
    EXPECT_EQ(noDevice.lid->machine().mode(), LidMode::open);
    EXPECT_EQ(noDevice.lines(), (std::vector<std::string>{
                                    startLine("angle none, external 0, built-in online, sensor ok"),
                                    "lid: mode unknown -> open (angle ?, external 0)"}));
}

TEST(LidController, AFailedSensorOpenIsLoggedWithItsStatus) {
    ScriptedSensor sensor;
    sensor.openStatus = static_cast<std::int32_t>(0xE00002C5);
    Rig rig(laptop(), &sensor);
    rig.lid->start();
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               "lid: sensor open failed (-536870203)",
                               startLine("angle none, external 0, built-in online, sensor ok"),
                               "lid: mode unknown -> open (angle ?, external 0)"}));
}

TEST(LidController, OnlyTheAngleElementCounts) {
    ScriptedSensor sensor;
    sensor.list = {{kHidSensorPage, kHidLidAngleUsage, 7},
                   {kHidSensorPage, 0x201, 8},
                   {0x01, kHidLidAngleUsage, 9}};
    sensor.values = {{{7, true}, 95}, {{8, true}, 1}, {{9, true}, 2}};
    Rig rig(laptop(), &sensor);
    rig.lid->start();
    EXPECT_EQ(rig.lid->angle(), 95);
    EXPECT_EQ(sensor.reads, (std::vector<std::pair<std::uint64_t, bool>>{{7, true}}));

    sensor.onValue(kHidSensorPage, 0x201, 3);
    sensor.onValue(0x01, kHidLidAngleUsage, 3);
    EXPECT_EQ(rig.lid->angle(), 95);
    sensor.onValue(kHidSensorPage, kHidLidAngleUsage, 42);
    EXPECT_EQ(rig.lid->angle(), 42);
}

TEST(LidController, HidReadAsksTheDeviceFirstAndFallsBackToTheCachedValue) {
    ScriptedSensor sensor;
    const HidElement angle{kHidSensorPage, kHidLidAngleUsage, 1};
    EXPECT_EQ(readHidInteger(sensor, angle, true), std::nullopt);
    sensor.values[{1, false}] = 30;
    EXPECT_EQ(readHidInteger(sensor, angle, true), 30);
    sensor.values[{1, true}] = 40;
    EXPECT_EQ(readHidInteger(sensor, angle, true), 40);
    sensor.reads.clear();
    EXPECT_EQ(readHidInteger(sensor, angle, false), 30);
    EXPECT_EQ(sensor.reads, (std::vector<std::pair<std::uint64_t, bool>>{{1, false}}));
}

TEST(LidController, EveryFifthTickPollsTheSensorForUnreportedChanges) {
    Rig rig(laptop());
    rig.lid->start();
    rig.machine.setLidAngle(2, /*reported=*/false);
    rig.scheduler.advance(4.0);
    EXPECT_EQ(rig.lid->angle(), 110);
    rig.scheduler.advance(1.0);  // the fifth tick, at 1005
    EXPECT_EQ(rig.lid->angle(), 2);
    rig.scheduler.advance(1.0);
    EXPECT_EQ(rig.lid->machine().mode(), LidMode::open);
    rig.scheduler.advance(1.0);  // 1.5 s of debounce are over at 1007
    EXPECT_EQ(rig.lid->machine().mode(), LidMode::closedAlone);
}

TEST(LidController, ImplausibleAnglesNeverCrash) {
    Rig rig(laptop());
    rig.lid->start();
    rig.lines();
    rig.moveLid(std::numeric_limits<std::int64_t>::max());
    rig.scheduler.advance(2.0);
    rig.moveLid(std::numeric_limits<std::int64_t>::min());
    rig.scheduler.advance(2.0);
    rig.moveLid(300);
    const auto lines = rig.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "lid: mode open -> closedAlone (angle 9223372036854775807, external 0)");
    EXPECT_EQ(lines[2], "lid: mode closedAlone -> open (angle 300, external 0)");
}

TEST(LidController, ConfigurationUpdatesAreLoggedAndActedOnAtOnce) {
    Rig rig(kLaptopAndExternal);
    rig.lid->start();
    rig.lines();
    LidConfig config;
    config.disconnectBuiltinWhenExternal = true;
    config.sleepDelay = 30.5;
    rig.lid->update(config);
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               "lid: config closeAngle=5 openAngle=15 closeDebounce=1.5 "
                               "sleepDelay=30.5 wakeSleepDelay=60 panelRetry=5 resleepInterval=1 "
                               "turnOffPanelWithExternal=true dimWhenClosed=true "
                               "disconnectBuiltinWhenExternal=true",
                               "display 1: disconnected (0)"}));
    EXPECT_EQ(rig.lid->machine().config(), config);
}

TEST(LidController, ReconfigurationTicksAtOnceIgnoringTheBeginEvent) {
    Rig rig(kLaptopAndExternal);
    rig.machine.setOnline(2, false);
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(2.0);
    ASSERT_EQ(rig.lid->machine().mode(), LidMode::closedAlone);
    rig.lines();
    const std::size_t pending = rig.scheduler.pendingCount();
    rig.machine.setOnline(2, true);  // begin, then add: one tick
    EXPECT_EQ(rig.scheduler.pendingCount(), pending + 1);
    rig.scheduler.runDue();
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               "lid: mode closedAlone -> closedExternal (angle 0, external 1)",
                               "display 1: disconnected (0)"}));
    EXPECT_EQ(rig.display(1)["backlight"], 0.5) << "the dim is undone";
}

TEST(LidController, WakeNotificationsAreLoggedAndHandled) {
    Rig rig(laptop());
    rig.lid->start();
    rig.lines();
    rig.machine.simulateWake();
    rig.scheduler.runDue();
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{"system woke (lid open, angle 110)"}));
    rig.moveLid(0);
    rig.scheduler.advance(10.0);  // closed alone since 1002, the display asleep
    rig.lines();
    rig.machine.simulateWake();
    rig.scheduler.runDue();
    EXPECT_EQ(rig.lines(),
              (std::vector<std::string>{
                  "system woke (lid closed, angle 0)",
                  "lid: woke with the lid closed and nothing external: display stays dark, "
                  "system sleep in 60 s"}));
    EXPECT_EQ(rig.power()["displaySleeps"], 2);
    EXPECT_EQ(rig.lid->machine().sleepDeadline(), 1070.0);
    rig.scheduler.advance(60.0);
    EXPECT_EQ(rig.power()["systemSleeps"], 1);
    EXPECT_EQ(rig.lines(), (std::vector<std::string>{
                               "lid: lid closed 600 s without an external display: system sleep"}));

    Rig blind(laptop(R"({ "sensor": false })"));
    blind.lid->start();
    blind.lines();
    blind.machine.simulateWake();
    blind.scheduler.runDue();
    EXPECT_EQ(blind.lines(), (std::vector<std::string>{"system woke (lid open, angle ?)"}));
}

TEST(LidController, ShutdownGivesBackThePanelAndItsBrightness) {
    Rig external(kLaptopAndExternal);
    external.lid->start();
    external.moveLid(0);
    // Past the panel retry, so a tick after shutdown would switch the panel off again.
    external.scheduler.advance(10.0);
    ASSERT_EQ(external.display(1)["enabled"], false);
    external.lines();
    external.lid->shutdown();
    external.scheduler.advance(10.0);
    EXPECT_EQ(external.display(1)["enabled"], true);
    EXPECT_EQ(external.lines(), (std::vector<std::string>{"display 1: connected (0)"}));

    Rig alone(laptop());
    alone.lid->start();
    alone.moveLid(0);
    alone.scheduler.advance(2.0);
    alone.lid->shutdown();
    alone.scheduler.advance(10.0);
    EXPECT_EQ(alone.display(1)["backlight"], 0.7);
    EXPECT_FALSE(alone.defaults.contains(kSaved));
    EXPECT_EQ(alone.power()["displaySleeps"], 1);
}

TEST(LidController, AControllerGoneBeforeItsDelayedWakeLeavesItUndone) {
    Rig rig(laptop());
    rig.lid->start();
    rig.moveLid(0);
    rig.scheduler.advance(2.0);
    rig.moveLid(110);
    EXPECT_EQ(rig.power()["userActivity"], 1);
    rig.lid.reset();
    rig.scheduler.advance(5.0);
    EXPECT_EQ(rig.power()["userActivity"], 1);
}

}  // namespace
}  // namespace lumora
