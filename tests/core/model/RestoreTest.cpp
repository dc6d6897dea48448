// Monitors that forget their DDC values in sleep or while unplugged, and colour tables reset
// by a wake: Lumora gives back what the user set, and only that.
#include <gtest/gtest.h>

#include "ModelScenario.h"
#include "model/DdcMemory.h"

namespace lumora::test {
namespace {

class Restore : public ModelScenario {
  protected:
    // The monitors of `fixtureName` forget on wake and ignore DDC/CI for 3 s after it; the
    // wake resets every gamma table.
    void startForgetful(const std::string& fixtureName) {
        sim::World world = fixtureWorld(fixtureName);
        world.gammaResetOnWake = true;
        for (auto& display : world.displays) {
            if (!display.ddc) continue;
            display.ddc->forgetsOnWake = true;
            display.ddc->wakeDeafSeconds = 3;
        }
        start(std::move(world));
    }
    int vcp(DisplayID id, const char* code) { return stateOf(id)["vcp"].value(code, -1); }
};

TEST_F(Restore, AForgetfulMonitorGetsBackWhatTheUserSetOnceItListensAgain) {
    startForgetful("twinMonitors.json");
    model->handleURL("lumora://brightness?display=2&value=70");
    model->handleURL("lumora://ddc?display=2&vcp=0x12&value=60");
    model->handleURL("lumora://ddc?display=2&vcp=0x60&value=17");  // an input: not given back
    clock.advance(2);
    EXPECT_EQ(defaults.jsonData(kDdcValuesKey),
              nlohmann::json::parse(R"({"4268-41234-1001": {"0x10": 70, "0x12": 60}})"));

    machine->clearWire();
    machine->simulateWake();
    EXPECT_EQ(vcp(2, "0x10"), 40) << "forgot";
    // Deaf for 3 s: what the scan and the first attempt say goes unheard; a retry takes.
    clock.advance(10);
    EXPECT_EQ(vcp(2, "0x10"), 70);
    EXPECT_EQ(vcp(2, "0x12"), 60);
    clock.advance(20);
    const auto lines = logged();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "display 2: restored brightness 70, contrast 60 after wake"),
              1);
    EXPECT_DOUBLE_EQ(model->ddc().value(2, VCP::brightness).value_or(-1), 0.7);
    EXPECT_TRUE(model->ddcAvailable()->contains(2));
    // The twin the user never touched went back to its own values and was left alone.
    for (const auto& e : machine->wire())
        EXPECT_FALSE(e.display == 3 && e.bytes.size() > 1 && e.bytes[1] == kSetVcpOpcode);
    EXPECT_EQ(vcp(3, "0x10"), 60);
}

TEST_F(Restore, WakeRestoresColourAndDdcOnlyWhenTheSettingIsOn) {
    for (bool on : {true, false}) {
        SCOPED_TRACE(on);
        startForgetful("laptopAndExternal.json");
        model->handleURL("lumora://brightness?display=2&value=70");
        model->handleURL("lumora://dim?display=3&value=0.5");
        model->setRestoreAfterWake(on);
        clock.advance(1);
        EXPECT_EQ(model->statusJson()["restoreAfterWake"], on);
        EXPECT_EQ(defaults.boolean("restoreAfterWake"), on);
        ASSERT_NE(stateOf(3)["gamma"], "identity");

        machine->simulateWake();
        clock.advance(12);
        EXPECT_EQ(vcp(2, "0x10"), on ? 70 : 50);
        EXPECT_EQ(stateOf(3)["gamma"] == "identity", !on);
        EXPECT_EQ(stateOf(2)["gamma"], "identity") << "a DDC monitor is never dimmed in software";
    }
}

TEST_F(Restore, AMonitorPluggedInAgainIsRestoredAndWhatTheUserSetMeanwhileWins) {
    startForgetful("twinMonitors.json");
    model->handleURL("lumora://brightness?display=2&value=70");
    clock.advance(1);
    // It forgets while unplugged, and is still deaf when it comes back.
    machine->setOnline(2, false);
    clock.advance(1);
    machine->simulateWake();
    clock.advance(0.5);
    machine->setOnline(2, true);
    clock.advance(12);
    EXPECT_EQ(vcp(2, "0x10"), 70);
    EXPECT_EQ(logged().back(), "display 2: restored brightness 70 after reconnection");

    // Set while the monitor is deaf after a wake: the user's write is lost on the wire, and
    // the restore gives back the user's newest value, not the one before.
    machine->simulateWake();
    clock.advance(1);
    model->handleURL("lumora://brightness?display=2&value=20");
    clock.advance(12);
    EXPECT_EQ(vcp(2, "0x10"), 20);
    EXPECT_EQ(logged().back(), "display 2: restored brightness 20 after wake");
}

TEST_F(Restore, AMonitorThatNeverListensIsGivenUpAfterTheLastRetry) {
    startForgetful("twinMonitors.json");
    model->handleURL("lumora://brightness?display=2&value=70");
    clock.advance(1);
    sim::World world = fixtureWorld("twinMonitors.json");
    world.displays[0].ddc->wakeDeafSeconds = 60;
    world.displays[0].ddc->forgetsOnWake = true;
    start(std::move(world));  // the same defaults: the value was remembered across the restart
    machine->simulateWake();
    clock.advance(9.9);
    EXPECT_FALSE(wasLogged("display 2: could not restore brightness 70 after wake"));
    clock.advance(2);
    EXPECT_TRUE(wasLogged("display 2: could not restore brightness 70 after wake"));
}

TEST(DdcMemory, StoredValuesThatDoNotFitAreDroppedWithoutLosingTheRest) {
    const std::vector<std::pair<std::string, DdcMemory::Controls>> cases = {
        {R"("not an object")", {}},
        {R"({"k": 5})", {}},
        {R"({"k": {"0x10": 70, "0x12": "high", "0x60": 3, "16": 9, "0x62": 70000}})", {{0x10, 70}}},
        {R"({"k": {"0x62": 30}, "other": {"0x10": 1}})", {{0x62, 30}}},
    };
    for (const auto& [stored, expected] : cases) {
        MemoryDefaults defaults;
        defaults.setJsonData(kDdcValuesKey, nlohmann::json::parse(stored));
        EXPECT_EQ(DdcMemory(defaults).controls("k"), expected) << stored;
    }
    MemoryDefaults bytes;
    bytes.setData(kDdcValuesKey, {'{', 'x'});
    DdcMemory fromGarbage(bytes);
    EXPECT_TRUE(fromGarbage.controls("k").empty());
    fromGarbage.remember("k", 0x10, 40);
    fromGarbage.save();
    EXPECT_EQ(bytes.jsonData(kDdcValuesKey), nlohmann::json::parse(R"({"k": {"0x10": 40}})"));
}

// The agent ended because its display server went away, and starts again on the next one:
// the displays the user had switched off go off again and the monitors get back their values.
// A mark older than ten minutes belongs to another day and is only cleared.
TEST_F(Restore, AStartSoonAfterTheServerWasLostPutsBackWhatTheNewServerForgot) {
    for (const double age : {601.0, 30.0}) {  // the log keeps the first round's lines
        SCOPED_TRACE(age);
        const bool resumes = age < kResumeWindowSeconds;
        defaults.setStringDictionary(Displays::kDisconnectedKey, {{"3", "Projector"}});
        defaults.setJsonData(kDdcValuesKey,
                             nlohmann::json::parse(R"({"4268-41234-12345": {"0x10": 70}})"));
        const double now = 1'780'000'000;
        defaults.setNumber(kResumeAfterServerLossKey, now - age);
        sim::World world = fixtureWorld("laptopAndExternal.json");
        world.clock = now;
        start(std::move(world));
        clock.advance(5);
        EXPECT_EQ(stateOf(3)["enabled"], !resumes);
        EXPECT_EQ(stateOf(2)["vcp"].value("0x10", -1), resumes ? 70 : 50);
        EXPECT_EQ(wasLogged("resuming after the display server was lost"), resumes);
        EXPECT_EQ(wasLogged("display 2: restored brightness 70 after the display server "
                            "restarted"),
                  resumes);
        EXPECT_FALSE(defaults.contains(kResumeAfterServerLossKey));
    }
}

}  // namespace
}  // namespace lumora::test
