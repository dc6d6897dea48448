#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "ModelScenario.h"
#include "adaptive/AdaptiveSettings.h"

namespace lumora::test {
namespace {

// The default machine: the laptop panel (1), the office monitor over DDC (2) and the
// projector dimmed in software (3).
class Adaptive : public ModelScenario {
  protected:
    static constexpr DisplayID kOffice = 2;
    static constexpr DisplayID kProjector = 3;

    void startWith(std::optional<double> lux) {
        sim::World world = sim::defaultWorld();
        world.lightLux = lux;
        start(world);
    }
    CommandResult command(const std::string& url) {
        CommandResult result = CommandResult::nothing("no answer");
        model->handleURL(url, [&](const CommandResult& r) { result = r; });
        clock.runDue();
        return result;
    }
    int officeDdc() { return stateOf(kOffice)["vcp"]["0x10"].get<int>(); }
    nlohmann::json adaptiveStatus() {
        model->writeStatus();
        return status()["adaptive"];
    }
};

TEST_F(Adaptive, SensorModeFollowsTheRoomInSmallQuietSteps) {
    startWith(300);
    ASSERT_TRUE(command("lumora://adaptive?value=sensor").carriedOut);
    clock.advance(3);
    EXPECT_EQ(officeDdc(), 59);  // the starting curve at 300 lux
    EXPECT_NEAR(model->brightness().level(kProjector), 0.593, 0.001);

    // Within the hysteresis: nothing is written.
    machine->clearWire();
    machine->setLightLux(320);
    clock.advance(10);
    EXPECT_EQ(ddcWrites(0x10), DdcWrites{});

    // The lights go down: 5-point steps, one write per 200 ms at most.
    machine->setLightLux(20);
    clock.advance(5);
    EXPECT_EQ(ddcWrites(0x10), (DdcWrites{{kOffice, 54},
                                          {kOffice, 49},
                                          {kOffice, 44},
                                          {kOffice, 39},
                                          {kOffice, 34},
                                          {kOffice, 31}}));
    // Each write goes out twice in a row; the first transmissions are a step apart.
    std::vector<double> times;
    bool second = false;
    for (const auto& e : machine->wire()) {
        if (e.kind != sim::WireEvent::Kind::write || e.bytes.size() != 6 || e.bytes[1] != 0x03)
            continue;
        if (!std::exchange(second, !second)) times.push_back(e.time);
    }
    ASSERT_EQ(times.size(), 6U);
    for (std::size_t i = 1; i < times.size(); ++i)
        EXPECT_GE(times[i] - times[i - 1], AdaptiveBrightness::kStepInterval - 1e-9);
    EXPECT_NEAR(model->brightness().level(kProjector), 0.308, 0.001);
    const auto status = adaptiveStatus();
    EXPECT_EQ(status["mode"], "sensor");
    EXPECT_EQ(status["input"], 20.0);
    EXPECT_NEAR(status["displays"]["2"]["target"].get<double>(), 0.308, 0.001);
    EXPECT_EQ(status["displays"]["2"]["points"][0], nlohmann::json::parse("[0, 0.1]"));
}

TEST_F(Adaptive, ACorrectionIsLearnedKeptAcrossARestartAndNotFought) {
    startWith(20);
    ASSERT_TRUE(command("lumora://adaptive?value=sensor").carriedOut);
    clock.advance(3);
    EXPECT_EQ(officeDdc(), 31);

    // The user drags the office monitor up while the room stays as it is.
    model->brightness().setFromSlider(kOffice, 0.45);
    model->brightness().setFromSlider(kOffice, 0.5);
    clock.advance(10);
    EXPECT_EQ(officeDdc(), 50);
    EXPECT_EQ(adaptiveStatus()["displays"]["2"]["points"][2], nlohmann::json::parse("[20.0, 0.5]"));

    // A restart on a monitor back at its own 50 % ... at 20 lux it is put where the user said.
    sim::World world = sim::defaultWorld();
    world.lightLux = 20;
    world.displays[1].ddc->vcp[0x10] = {70, 100};
    start(world);
    clock.advance(3);
    EXPECT_EQ(officeDdc(), 50);
    EXPECT_TRUE(wasLogged("adaptive: sensor"));
    // ... and the projector, never corrected, keeps the starting curve.
    EXPECT_NEAR(model->brightness().level(kProjector), 0.308, 0.001);
}

TEST_F(Adaptive, SyncFollowsTheBuiltInDisplayWhateverMovedIt) {
    startWith(std::nullopt);
    ASSERT_TRUE(command("lumora://adaptive?value=sync").carriedOut);
    clock.advance(3);
    EXPECT_EQ(officeDdc(), 50);  // the panel is at 0.5, the identity curve
    EXPECT_NEAR(model->brightness().level(kProjector), 0.5, 1e-9);

    // The system's own auto-brightness moves the panel, not Lumora.
    float ignored = 0;
    ASSERT_EQ(machine->backlight().set(1, 0.8F), 0);
    clock.advance(3);
    EXPECT_EQ(officeDdc(), 80);
    EXPECT_NEAR(model->brightness().level(kProjector), 0.8, 1e-6);
    ASSERT_EQ(machine->backlight().get(1, ignored), 0);

    // The brightness keys on the panel: followed at once, not at the next poll.
    machine->clearWire();
    model->brightness().set(1, 0.7);
    clock.advance(0.3);
    EXPECT_EQ(ddcWrites(0x10), (DdcWrites{{kOffice, 75}}));
    clock.advance(1);

    // A display taken out stays where it is.
    model->adaptive().setParticipating(kProjector, false);
    model->brightness().set(1, 0.2);
    clock.advance(3);
    EXPECT_EQ(officeDdc(), 20);
    EXPECT_NEAR(model->brightness().level(kProjector), 0.7, 1e-6);
    EXPECT_EQ(adaptiveStatus()["displays"].size(), 1U);
}

TEST_F(Adaptive, ModesTheMachineCannotFollowAreRefusedWithOneLine) {
    startWith(std::nullopt);
    EXPECT_EQ(command("lumora://adaptive?value=sensor").problem,
              "no ambient light sensor on this machine");
    EXPECT_EQ(command("lumora://adaptive?value=schedule").problem,
              "no location set (latitude and longitude)");
    EXPECT_EQ(command("lumora://adaptive?value=bright").problem,
              "adaptive needs off, sync, sensor or schedule");
    EXPECT_EQ(command("lumora://adaptive?value=schedule&latitude=95&longitude=0").problem,
              "latitude -90…90 and longitude -180…180 go together");
    EXPECT_TRUE(wasLogged("adaptive: sensor: no ambient light sensor on this machine"));
    EXPECT_EQ(adaptiveStatus()["mode"], "off");
    EXPECT_EQ(defaults.object(kAdaptiveModeKey), std::nullopt);

    // Corrupt stored settings give the defaults.
    defaults.set(kAdaptiveModeKey, "loud");
    defaults.set(kAdaptiveCurvesKey, nlohmann::json::binary({1, 2, 3}));
    defaults.setJsonData(kAdaptiveLocationKey, {{"latitude", 200}, {"longitude", 0}});
    start(sim::defaultWorld());
    EXPECT_EQ(model->adaptive().mode(), AdaptiveMode::off);
    EXPECT_EQ(model->adaptive().location(), std::nullopt);
}

// A midsummer day in Berlin, in virtual time: the table goes in the closing note.
TEST_F(Adaptive, ScheduleFollowsTheSunThroughADayWithFewWrites) {
    startWith(std::nullopt);
    machine->setClock(sim::parseUtcTime("2026-06-21T00:00:00Z").value());
    model->adaptive().setNightColor({true, 4000});
    ASSERT_TRUE(
        command("lumora://adaptive?value=schedule&latitude=52.52&longitude=13.405").carriedOut);
    clock.advance(3);
    const auto nightRamp = machine->gamma(kProjector);
    ASSERT_TRUE(nightRamp);
    EXPECT_LT(nightRamp->blue.back(), nightRamp->red.back());  // warmer at night

    machine->clearWire();
    std::ostringstream table;
    std::vector<int> hourly;
    std::optional<GammaRamps> dayRamp;
    for (int hour = 0; hour < 24; ++hour) {
        hourly.push_back(officeDdc());
        if (hour == 12) dayRamp = machine->gamma(kProjector);
        table << std::setw(2) << hour << ":00 UTC  office " << hourly.back() << " %\n";
        clock.advance(3600);
    }
    const std::size_t writes = ddcWrites(0x10).size();
    std::cout << table.str() << "DDC writes in 24 h: " << writes << "\n";
    EXPECT_EQ(hourly[0], 30);   // night
    EXPECT_EQ(hourly[12], 80);  // day
    EXPECT_EQ(hourly[23], 30);
    EXPECT_LE(writes, 64U);  // each twilight: about one write per DDC percent
    ASSERT_TRUE(dayRamp);
    EXPECT_EQ(dayRamp->blue.back(), dayRamp->red.back());
}

}  // namespace
}  // namespace lumora::test
