#include <gtest/gtest.h>

#include "DisplayScenario.h"

namespace lumora {
namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;

constexpr const char* kFixture = "laptopDockedMonitorAndProjector.json";

constexpr const char* kOnlyExternal = R"({ "displays": [
  { "id": 2, "name": "Office Monitor", "modes": [ { "id": 20, "width": 2560, "height": 1440 } ] } ] })";

class ConfigureTest : public test::DisplayScenario {
  protected:
    DisplayMode mode(DisplayID id, std::int32_t modeID) {
        for (const auto& m : server->allModes(id)) {
            if (m.id == modeID) return DisplayMode::from(m);
        }
        ADD_FAILURE() << "no mode " << modeID;
        return {};
    }
    Point origin(DisplayID id) { return server->bounds(id).origin; }
};

TEST_F(ConfigureTest, SetModeCompletesPermanentlyAndLogsTheLabel) {
    startFixture(kFixture);
    EXPECT_TRUE(displays->setMode(2, mode(2, 21)));
    EXPECT_EQ(displays->currentMode(2)->id, 21);
    EXPECT_EQ(server->calls, (Lines{"begin", "mode 2 21", "complete permanently"}));

    // A low-resolution duplicate that the mode list hides can still be set.
    EXPECT_TRUE(displays->setMode(2, mode(2, 22)));
    EXPECT_EQ(displays->currentMode(2)->id, 22);
    EXPECT_EQ(logged(), (Lines{"display 2: mode 1920×1080 · 60 Hz -> ok",
                               "display 2: mode 2560×1440 · 60 Hz -> ok"}));
}

TEST_F(ConfigureTest, SetModeFailureLogsTheStatus) {
    startFixture(kFixture);
    server->failComplete = 1004;
    EXPECT_FALSE(displays->setMode(5, mode(5, 10)));
    EXPECT_EQ(logged(), (Lines{"display 5: mode 1512×982 HiDPI · 120 Hz -> error 1004"}));
    server->failComplete = -1;
    EXPECT_FALSE(displays->setMode(5, mode(5, 10)));
    EXPECT_EQ(logged().back(), "display 5: mode 1512×982 HiDPI · 120 Hz -> error -1");
}

TEST_F(ConfigureTest, SetModeWithAModeTheDisplayDoesNotOfferIsSilent) {
    startFixture(kFixture);
    EXPECT_FALSE(displays->setMode(2, DisplayMode{99, 2560, 1440, 2560, 1440, 60}));
    EXPECT_FALSE(displays->setMode(2, mode(2, 23)));  // listed by the server, but not usable
    EXPECT_FALSE(displays->setMode(9, mode(2, 21)));  // another display's mode
    EXPECT_FALSE(displays->setMode(77, mode(2, 20)));
    EXPECT_TRUE(server->calls.empty());
    EXPECT_EQ(displays->currentMode(2)->id, 20);
    EXPECT_TRUE(logged().empty());
}

TEST_F(ConfigureTest, TransactionThatCannotBeginFailsSilently) {
    startFixture(kFixture);
    server->failBegin = true;
    EXPECT_FALSE(displays->setMode(2, mode(2, 21)));
    EXPECT_FALSE(displays->setMain(5));
    EXPECT_FALSE(displays->mirror(9, 2));
    EXPECT_FALSE(displays->setEnabled(9, false, false));
    EXPECT_EQ(server->calls, (Lines{"begin", "begin", "begin", "begin"}));
    EXPECT_TRUE(logged().empty());
    EXPECT_EQ(displays->onlineIDs().size(), 3u);
    EXPECT_FALSE(storedDisconnected().has_value());
}

TEST_F(ConfigureTest, SetMainMovesTheTargetToTheOriginKeepingTheArrangement) {
    startFixture(kFixture);
    EXPECT_TRUE(displays->setMain(5));
    EXPECT_EQ(server->calls, (Lines{"begin", "origin 9 4072 -300", "origin 5 0 0",
                                    "origin 2 1512 -300", "complete permanently"}));
    EXPECT_EQ(server->mainDisplay(), 5u);
    EXPECT_EQ(origin(2), (Point{1512, -300}));
    EXPECT_EQ(origin(9), (Point{4072, -300}));
    EXPECT_TRUE(displays->list()[0].isMain);
    EXPECT_TRUE(logged().empty());
}

TEST_F(ConfigureTest, SetMainOnTheMainDisplayIssuesTheCurrentOrigins) {
    startFixture(kFixture);
    EXPECT_TRUE(displays->setMain(2));
    EXPECT_EQ(server->calls, (Lines{"begin", "origin 9 2560 0", "origin 5 -1512 300",
                                    "origin 2 0 0", "complete permanently"}));
    EXPECT_EQ(origin(5), (Point{-1512, 300}));
}

TEST_F(ConfigureTest, SetMainRefusesOffsetsBeyondThirtyTwoBits) {
    startFixture(kFixture);
    server->originOverride[9] = Point{3e9, 0};
    EXPECT_FALSE(displays->setMain(2));
    server->originOverride[9] = Point{std::nan(""), 0};
    EXPECT_FALSE(displays->setMain(2));
    EXPECT_TRUE(server->calls.empty());  // nothing begun, nothing half-moved

    server->originOverride[9] = Point{2147483647.9, -2147483648.0};  // truncates into range
    EXPECT_TRUE(displays->setMain(2));
    EXPECT_EQ(server->calls[1], "origin 9 2147483647 -2147483648");
}

TEST_F(ConfigureTest, MirrorAndEndMirroring) {
    startFixture(kFixture);
    EXPECT_EQ(displays->mirrorSource(9), 0u);
    EXPECT_TRUE(displays->mirror(9, 2));
    EXPECT_EQ(displays->mirrorSource(9), 2u);
    EXPECT_TRUE(displays->mirror(9, 0));
    EXPECT_EQ(displays->mirrorSource(9), 0u);
    EXPECT_EQ(server->calls, (Lines{"begin", "mirror 9 2", "complete permanently", "begin",
                                    "mirror 9 0", "complete permanently"}));
    EXPECT_TRUE(logged().empty());
}

TEST_F(ConfigureTest, RefusesToDisconnectTheOnlyDisplayEvenAnExternalOne) {
    start(kOnlyExternal);
    EXPECT_FALSE(displays->setEnabled(2, false, true));
    EXPECT_EQ(logged(), (Lines{"display 2: refusing to disconnect the only display"}));
    EXPECT_TRUE(server->calls.empty());
    EXPECT_TRUE(displays->disconnected().empty());
    EXPECT_FALSE(storedDisconnected().has_value());
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{2}));
}

TEST_F(ConfigureTest, DisconnectAndReconnectAnExternalDisplay) {
    startFixture(kFixture);
    EXPECT_TRUE(displays->setEnabled(9, false, false));
    EXPECT_EQ(server->calls, (Lines{"begin", "enable 9 off", "complete for session"}));
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{5, 2}));
    EXPECT_EQ(displays->disconnected(), (std::map<DisplayID, std::string>{{9, "Projector"}}));
    EXPECT_EQ(storedDisconnected(), json({{"9", "Projector"}}));
    const auto list = displays->list();
    EXPECT_EQ(list.back().id, 9u);
    EXPECT_FALSE(list.back().isOnline);
    EXPECT_EQ(list.back().name, "Projector");

    // Quiet success: no line.
    EXPECT_TRUE(displays->setEnabled(9, true, true));
    EXPECT_TRUE(displays->disconnected().empty());
    EXPECT_EQ(storedDisconnected(), json::object());
    EXPECT_EQ(displays->onlineIDs().size(), 3u);
    EXPECT_EQ(logged(), (Lines{"display 9: disconnected (0)"}));
}

TEST_F(ConfigureTest, DisconnectingTheBuiltinPanelIsNotRecorded) {
    startFixture(kFixture);
    displays->snapshot();
    EXPECT_TRUE(displays->setEnabled(5, false, false));
    EXPECT_TRUE(displays->disconnected().empty());
    EXPECT_EQ(storedDisconnected(), json::object());
    EXPECT_EQ(logged(), (Lines{"display 5: disconnected (0)"}));
    // Listed through the remembered built-in identifier instead.
    const auto list = displays->list();
    EXPECT_EQ(list[0].id, 5u);
    EXPECT_EQ(list[0].name, "Built-in Display");
    EXPECT_FALSE(list[0].isOnline);
}

TEST_F(ConfigureTest, QuietFailureIsStillLoggedAndTheRecordStays) {
    startFixture(kFixture);
    server->failComplete = 1001;
    EXPECT_FALSE(displays->setEnabled(9, false, true));
    EXPECT_EQ(logged(), (Lines{"display 9: disconnected (1001)"}));
    EXPECT_EQ(displays->disconnected(), (std::map<DisplayID, std::string>{{9, "Projector"}}));
    EXPECT_EQ(storedDisconnected(), json({{"9", "Projector"}}));

    EXPECT_FALSE(displays->setEnabled(9, true, true));
    EXPECT_EQ(logged().back(), "display 9: connected (1001)");
    EXPECT_EQ(storedDisconnected(), json({{"9", "Projector"}}));
}

TEST_F(ConfigureTest, WithoutTheEnableEntryPointEveryChangeFailsWith1000) {
    start(R"({ "disconnect": false, "displays": [
      { "id": 5, "builtin": true, "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 9, "name": "Projector", "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    EXPECT_FALSE(displays->canDisconnect());
    EXPECT_FALSE(displays->setEnabled(9, false, true));
    EXPECT_FALSE(displays->setEnabled(9, true, true));
    EXPECT_EQ(server->calls,
              (Lines{"begin", "enable 9 off", "cancel", "begin", "enable 9 on", "cancel"}));
    EXPECT_EQ(logged(),
              (Lines{"display 9: disconnect failed (1000)", "display 9: connect failed (1000)"}));
    // Recorded before the attempt, kept in memory, never saved: no completion was reached.
    EXPECT_EQ(displays->disconnected(), (std::map<DisplayID, std::string>{{9, "Projector"}}));
    EXPECT_FALSE(storedDisconnected().has_value());
    EXPECT_EQ(displays->onlineIDs().size(), 2u);
}

TEST_F(ConfigureTest, UnparsableStoredKeyIsDroppedOnLoadAndGoneAtTheNextSave) {
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"abc", "Junk"}, {"7", "Old TV"}});
    startFixture(kFixture);
    EXPECT_TRUE(displays->canDisconnect());
    EXPECT_EQ(displays->disconnected(), (std::map<DisplayID, std::string>{{7, "Old TV"}}));
    EXPECT_TRUE(displays->setEnabled(2, false, true));
    EXPECT_EQ(storedDisconnected(), json({{"2", "Office Monitor"}, {"7", "Old TV"}}));
    EXPECT_TRUE(logged().empty());
}

TEST_F(ConfigureTest, ReconnectAllBringsBackWhatItCanAndKeepsTheRest) {
    // 7 was switched off in an earlier run and is no longer attached at all.
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"7", "Old TV"}});
    startFixture(kFixture);
    ASSERT_TRUE(displays->setEnabled(9, false, true));
    ASSERT_TRUE(displays->setEnabled(2, false, true));
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{5}));
    server->calls.clear();

    displays->reconnectAll();
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{9, 5, 2}));
    const auto lines = logged();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "display 2: connected (0)");
    EXPECT_EQ(lines[1], "display 7: connect failed (1001)");
    EXPECT_EQ(lines[2], "display 9: connected (0)");
    EXPECT_EQ(displays->disconnected(), (std::map<DisplayID, std::string>{{7, "Old TV"}}));
    EXPECT_EQ(storedDisconnected(), json({{"7", "Old TV"}}));
}

}  // namespace
}  // namespace lumora
