// URL commands end to end: a laptop with its panel (1), a DDC monitor (2) and a projector
// without DDC (3); each command row of the interface, read back from the status file, the
// simulated hardware and the event log.
#include <gtest/gtest.h>

#include "ModelScenario.h"

namespace lumora::test {
namespace {

using sim::SimOsd;

class Commands : public ModelScenario {
  protected:
    void SetUp() override { start("laptopAndExternal.json"); }
};

TEST_F(Commands, BrightnessOnTheDdcMonitorIsCachedAtOnceAndWrittenAfterTheDebounce) {
    machine->clearWire();
    model->handleURL("lumora://brightness?display=2&value=70");
    EXPECT_TRUE(wasLogged(R"(url: brightness ["display": "2", "value": "70"])"));
    EXPECT_EQ(statusOf(2)["brightness"], 0.7);  // the cached value, before the monitor has it
    EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 50);
    EXPECT_EQ(machine->osd().shown(), (std::vector<SimOsd::Shown>{{2, 0.7, "sun.max.fill", {}}}));

    clock.advance(DdcControl::kDebounce - 0.001);
    EXPECT_TRUE(machine->wire().empty());
    clock.advance(0.002);
    const auto wire = machine->wire();
    ASSERT_EQ(wire.size(), 2u);
    EXPECT_EQ(wire[0].bytes, (std::vector<std::uint8_t>{0x84, 0x03, 0x10, 0x00, 0x46, 0xEE}));
    EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 70);
}

TEST_F(Commands, BrightnessUnderThePointerAndWithoutAValue) {
    model->handleURL("lumora://brightness?value=0.7");  // the pointer rests on the panel
    EXPECT_EQ(statusOf(1)["brightness"], 0.7);
    EXPECT_NEAR(stateOf(1)["backlight"].get<double>(), 0.7, 1e-6);
    EXPECT_EQ(machine->osd().shown(), (std::vector<SimOsd::Shown>{{1, 0.7, "sun.max.fill", {}}}));

    writeFile(session.statusFile(), std::string(20000, ' ') + "stale");  // longer than status
    const auto before = machine->state();
    model->handleURL("lumora://brightness?display=main");
    model->handleURL("lumora://brightness?display=nowhere&value=20");
    clock.advance(1.0);
    EXPECT_EQ(status()["displays"].size(), 3u);  // rewritten
    EXPECT_EQ(machine->state(), before);
    EXPECT_EQ(machine->osd().shown().size(), 1u);
}

TEST_F(Commands, BrightnessStepsOnEveryPath) {
    model->handleURL("lumora://brightness-down?display=3");       // software: 1.0 -> 0.9375
    model->handleURL("lumora://brightness-down?display=Office");  // DDC: 0.5 -> 0.4375
    model->handleURL("lumora://brightness-up?display=builtin");   // panel: 0.5 -> 0.5625
    clock.advance(0.2);
    EXPECT_EQ(statusOf(3)["brightness"], 0.9375);
    EXPECT_NEAR(stateOf(3)["gamma"]["red"][2].get<double>(), 0.9375, 1e-3);  // 3 decimals
    EXPECT_EQ(ddcWrites(0x10), (DdcWrites{{2, 44}}));                        // round(43.75)
    EXPECT_NEAR(stateOf(1)["backlight"].get<double>(), 0.5625, 1e-6);
}

TEST_F(Commands, HiDPIToggleAndOnWordsOtherThanTrueMeanOff) {
    model->handleURL("lumora://hidpi?display=2");
    clock.advance(2.0);
    EXPECT_EQ(statusOf(2)["hidpi"], true);
    EXPECT_EQ(status()["displays"].size(), 3u);  // the backing display is not listed
    EXPECT_EQ(statusOf(2)["mode"], "2560\u00D71440 HiDPI \u00B7 60 Hz");  // the backing mode

    model->handleURL("lumora://hidpi?display=2&on=yes");
    EXPECT_EQ(statusOf(2)["hidpi"], false);
    EXPECT_TRUE(machine->state()["virtualDisplays"].empty());
}

TEST_F(Commands, ConnectDisconnectAndMain) {
    model->handleURL("lumora://connect?display=3&on=0");
    EXPECT_EQ(stateOf(3)["enabled"], false);
    EXPECT_EQ(statusOf(3)["online"], false);
    model->handleURL("lumora://connect?display=3");
    EXPECT_EQ(stateOf(3)["enabled"], true);
    model->handleURL("lumora://disconnect?display=PROJ");
    EXPECT_EQ(stateOf(3)["enabled"], false);

    model->handleURL("lumora://main?display=2");
    EXPECT_EQ(stateOf(2)["main"], true);
    EXPECT_EQ(stateOf(2)["origin"], nlohmann::json::array({0, 0}));
    EXPECT_EQ(statusOf(2)["main"], true);
}

TEST_F(Commands, ModePicksTheFirstMatchByHzAndHiDPI) {
    model->handleURL("lumora://mode?display=2&width=2560&height=1440&hz=59");
    EXPECT_EQ(stateOf(2)["mode"], 23);  // 59.94 Hz: 60 Hz is not within 1.0 of 59
    model->handleURL("lumora://mode?display=2&width=2560&height=1440");
    EXPECT_EQ(stateOf(2)["mode"], 20);
    model->handleURL("lumora://mode?display=2&width=1280&height=720&hidpi=1");
    EXPECT_EQ(stateOf(2)["mode"], 22);

    // No match: nothing changes, the status is still rewritten.
    writeFile(session.statusFile(), "stale");
    model->handleURL("lumora://mode?display=2&width=1920&height=1080&hidpi=true");
    EXPECT_EQ(stateOf(2)["mode"], 22);
    EXPECT_TRUE(status().is_object());

    // Unresolvable display or a non-integer side: the file is left as it is.
    for (const char* url : {"lumora://mode?display=2&width=1920.0&height=1080",
                            "lumora://mode?display=nowhere&width=1920&height=1080"}) {
        writeFile(session.statusFile(), "stale");
        model->handleURL(url);
        EXPECT_EQ(statusText(), "stale") << url;
    }
}

TEST_F(Commands, DimHasNoFloorAndAbsentValueMeansBlack) {
    model->handleURL("lumora://dim?display=3&value=40");
    EXPECT_EQ(statusOf(3)["brightness"], 0.4);
    EXPECT_NEAR(stateOf(3)["gamma"]["green"][2].get<double>(), 0.4, 1e-6);
    model->handleURL("lumora://dim?display=3");
    EXPECT_EQ(statusOf(3)["brightness"], 0.0);
    EXPECT_EQ(stateOf(3)["gamma"]["blue"][2], 0.0);
}

TEST_F(Commands, DdcSendsRawValuesAtOnceForKnownCodesOnly) {
    machine->clearWire();
    model->handleURL("lumora://ddc?display=2&vcp=60&value=17");
    model->handleURL("lumora://ddc?display=2&vcp=0x62&value=+9");
    for (const char* url :
         {"lumora://ddc?display=2&vcp=0x99&value=1", "lumora://ddc?display=2&vcp=10&value=70000",
          "lumora://ddc?display=2&value=1", "lumora://ddc?display=3&vcp=10&value=1",
          "lumora://ddc?display=2&vcp=zz&value=1"}) {
        model->handleURL(url);
    }
    clock.advance(0.5);  // one write after the other on the monitor's queue
    EXPECT_EQ(stateOf(2)["vcp"]["0x60"], 17);
    EXPECT_EQ(stateOf(2)["vcp"]["0x62"], 9);
    EXPECT_EQ(machine->wire().size(), 4u);
    EXPECT_TRUE(wasLogged("DDC display 2: VCP 0x60 = 17"));
    EXPECT_TRUE(wasLogged("DDC display 2: VCP 0x62 = 9"));
}

TEST_F(Commands, SleepDisplaysAndVirtualScreens) {
    model->handleURL("lumora://sleep-displays");
    EXPECT_EQ(machine->state()["power"]["displaySleeps"], 1);

    model->handleURL("lumora://virtual?width=2560&height=1440");
    model->handleURL("lumora://virtual?width=1920&height=1080&name=Side&hidpi=0");
    for (const char* url :
         {"lumora://virtual?width=4294967296&height=1080", "lumora://virtual?width=-1&height=9",
          "lumora://virtual?width=abc&height=1080"}) {
        model->handleURL(url);
    }
    const auto virtuals = machine->state()["virtualDisplays"];
    ASSERT_EQ(virtuals.size(), 2u);
    EXPECT_EQ(virtuals[0]["name"], "Lumora 2560\u00D71440");
    EXPECT_EQ(virtuals[0]["hiDPI"], true);
    EXPECT_EQ(virtuals[1]["name"], "Side");
    EXPECT_EQ(virtuals[1]["hiDPI"], false);
    EXPECT_EQ(model->virtualConfigs()->size(), 2u);
    clock.advance(AppModel::kRefreshDelay);
    EXPECT_EQ(status()["displays"].size(), 5u);
}

// Wayland tells no pointer position: the display last named, else the main one, takes it.
class CommandsWithoutPointer : public ModelScenario {
  protected:
    void SetUp() override {
        start("laptopAndExternal.json", /*events=*/true);
        eventServer->pointerKnown = false;
    }
};

TEST_F(CommandsWithoutPointer, ActOnTheDisplayLastChosenElseTheMainOne) {
    model->handleURL("lumora://brightness-up");
    EXPECT_EQ(model->builtinBrightness().get(), 0.5625);  // the main display, the laptop's

    model->handleURL("lumora://brightness?display=projector&value=40");
    model->handleURL("lumora://dim?value=0.2");
    EXPECT_EQ(model->color()->at(3).dim, 0.2);
    model->perform(ShortcutAction::dimToBlack);
    EXPECT_EQ(model->color()->at(3).dim, 0.0);
    // The panel's slider chooses too.
    model->brightness().setFromSlider(2, 0.3);
    model->handleURL("lumora://brightness-down");
    clock.advance(1);
    EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 25);  // 0.3 snaps to 5/16, one step down is 4/16
    // A chosen display that went away gives the main display back.
    machine->setOnline(2, false);
    eventServer->fire(2, DisplayChange::removed);
    clock.advance(1);
    model->handleURL("lumora://brightness-down");
    EXPECT_EQ(model->builtinBrightness().get(), 0.5);

    // Sleeping the displays never depended on the pointer.
    model->handleURL("lumora://sleep-displays");
    EXPECT_EQ(machine->state()["power"]["displaySleeps"], 1);
}

TEST_F(Commands, StatusKeysAreSortedAndUnknownCommandsAreLogged) {
    model->handleURL("lumora://status");
    const std::string text = statusText();
    // Top-level keys sit two spaces in.
    EXPECT_LT(text.find("\n  \"adaptive\""), text.find("\n  \"angle\""));
    EXPECT_LT(text.find("\n  \"angle\""), text.find("\n  \"displays\""));
    EXPECT_LT(text.find("\n  \"displays\""), text.find("\n  \"lid\""));
    EXPECT_EQ(status()["angle"], 110);
    EXPECT_EQ(status()["lid"], "open");
    EXPECT_EQ(statusOf(2), (nlohmann::json{{"id", 2},
                                           {"name", "Office Monitor"},
                                           {"builtin", false},
                                           {"main", false},
                                           {"online", true},
                                           {"virtual", false},
                                           {"hidpi", false},
                                           {"ddc", true},
                                           {"mode", "2560\u00D71440 \u00B7 60 Hz"},
                                           {"brightness", 0.5}}));
    EXPECT_EQ(statusOf(3)["ddc"], false);

    std::filesystem::remove(session.statusFile());
    model->handleURL("lumora://frobnicate?x=1");
    EXPECT_TRUE(wasLogged("url: unknown command frobnicate"));
    EXPECT_TRUE(status().is_object());
}

TEST_F(Commands, LogLineStaysOneLineAndUrlsWithoutHostAreDropped) {
    model->handleURL("lumora://status?name=%0Aurl:%20frobnicate%20%22x%22&%0D=%5C");
    model->handleURL("lumora://fro%0Abnicate");
    const auto lines = logged();
    EXPECT_TRUE(wasLogged(R"(url: status ["\r": "\\", "name": "\nurl: frobnicate \"x\""])"));
    EXPECT_TRUE(wasLogged(R"(url: unknown command fro\nbnicate)"));

    std::filesystem::remove(session.statusFile());
    model->handleURL("lumora:status");
    model->handleURL("lumora://?value=1");
    EXPECT_EQ(logged().size(), lines.size());
    EXPECT_FALSE(std::filesystem::exists(session.statusFile()));
}

// A raw DDC write ends when the monitor has taken it; a monitor that does not answer on the
// bus makes the command fail with the reason.
TEST_F(Commands, ADdcWriteTheMonitorDoesNotTakeEndsTheCommandWithTheReason) {
    for (const char* fixtureName : {"laptopAndExternal.json", "brokenDdc.json"}) {
        SCOPED_TRACE(fixtureName);
        const bool answers = std::string(fixtureName) == "laptopAndExternal.json";
        start(fixtureName);
        std::optional<CommandResult> result;
        model->handleURL("lumora://ddc?display=2&vcp=0x10&value=50",
                         [&](const CommandResult& r) { result = r; });
        EXPECT_EQ(result, std::nullopt) << "waits for the monitor's bus";
        clock.advance(1);
        EXPECT_EQ(result, answers ? CommandResult::done()
                                  : CommandResult::nothing("display 2 did not take VCP 0x10 = 50: "
                                                           "no reply on the bus"));
        EXPECT_EQ(wasLogged("DDC display 2: VCP 0x10 = 50 not taken (no reply on the bus)"),
                  !answers);
    }
}

TEST_F(Commands, EachCommandTellsItsSenderWhatBecameOfIt) {
    struct Case {
        const char* url;
        CommandResult expected;
    };
    const Case cases[] = {
        {"lumora://brightness?display=2&value=70", CommandResult::done()},
        {"lumora://brightness?display=tv&value=70",
         CommandResult::nothing("display not found: tv")},
        {"lumora://brightness?display=2&value=abc",
         CommandResult::nothing("brightness needs a value (0-100 or 0-1)")},
        {"lumora://mode?display=2&width=1&height=1", CommandResult::nothing("no mode matches 1x1")},
        {"lumora://ddc?display=3&vcp=10&value=1",
         CommandResult::nothing("display 3 has no DDC/CI channel")},
        {"lumora://frobnicate", CommandResult::nothing("unknown command: frobnicate")},
        {"not a url", CommandResult::nothing("not a lumora:// URL")},
        {"lumora://status", CommandResult::done()},
    };
    for (const auto& c : cases) {
        std::optional<CommandResult> result;
        model->handleURL(c.url, [&](const CommandResult& r) { result = r; });
        EXPECT_EQ(result, c.expected) << c.url;
    }
}

// A command that comes while the monitors' first DDC scan runs waits for it: otherwise the
// monitor would be dimmed in software only because the command came early.
TEST_F(Commands, CommandsDuringTheFirstDdcScanWaitForIt) {
    // Outlives the calls: a command that waits answers later.
    std::optional<CommandResult> result;
    auto early = [&](const std::string& url) {
        result.reset();
        model->handleURL(url, [&](const CommandResult& r) { result = r; });
        return result;
    };
    for (bool plugged : {false, true}) {
        SCOPED_TRACE(plugged ? "a monitor plugged in" : "right after start");
        if (plugged) {
            sim::World world = fixtureWorld("laptopAndExternal.json");
            world.displays[1].online = false;
            start(world);
            machine->setOnline(2, true);  // the command comes before the event is handled
        } else {
            boot(fixtureWorld("laptopAndExternal.json"));
            model->start();
        }
        EXPECT_EQ(early("lumora://brightness?display=office&value=70"), std::nullopt);
        clock.advance(kSettle);
        EXPECT_EQ(stateOf(2)["vcp"]["0x10"], 70);
        EXPECT_EQ(stateOf(2)["gamma"], "identity");
        EXPECT_EQ(statusOf(2)["ddc"], true);
        EXPECT_EQ(early("lumora://status"), CommandResult::done());  // nothing to wait for now
    }
}

TEST_F(Commands, AControlTheMachineLacksIsOneLogLine) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    world.disconnect = false;
    start(world);
    std::optional<CommandResult> result;
    model->handleURL("lumora://disconnect?display=3", [&](const CommandResult& r) { result = r; });
    EXPECT_EQ(result, CommandResult::nothing("switching displays off and on is not available on "
                                             "this machine"));
    EXPECT_TRUE(
        wasLogged("url: disconnect: switching displays off and on is not available on "
                  "this machine"));
    EXPECT_EQ(stateOf(3)["enabled"], true);
}

}  // namespace
}  // namespace lumora::test
