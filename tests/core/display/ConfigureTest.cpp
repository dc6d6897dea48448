#include <gtest/gtest.h>

#include "DisplayScenario.h"

namespace lumora {
namespace {

using nlohmann::json;
using test::Lines;
using Names = std::map<DisplayID, std::string>;

// Only the identifier must be one the display offers; the rest makes the logged label.
const DisplayMode k1080{21, 1920, 1080, 1920, 1080, 59.94};
const DisplayMode k1440Tall{22, 2560, 1440, 2560, 1600, 60};

using ConfigureTest = test::DisplayScenario;

TEST_F(ConfigureTest, SetModeLogsTheLabelWithTheOutcome) {
    startFixture();
    EXPECT_TRUE(displays->setMode(2, k1080));
    EXPECT_EQ(displays->currentMode(2)->id, 21);
    EXPECT_EQ(server->calls, (Lines{"begin", "mode 2 21", "complete permanently"}));
    // A low-resolution duplicate that the mode list hides can still be set.
    EXPECT_TRUE(displays->setMode(2, k1440Tall));
    EXPECT_EQ(displays->currentMode(2)->id, 22);
    server->failComplete = 1004;
    EXPECT_FALSE(displays->setMode(5, (DisplayMode{10, 1512, 982, 3024, 1964, 120})));
    EXPECT_EQ(logged(), (Lines{"display 2: mode 1920×1080 · 60 Hz -> ok",
                               "display 2: mode 2560×1440 · 60 Hz -> ok",
                               "display 5: mode 1512×982 HiDPI · 120 Hz -> error 1004"}));
}

TEST_F(ConfigureTest, ModesNotOfferedAndTransactionsThatCannotBeginFailSilently) {
    startFixture();
    // Listed by the server but not usable; another display's mode.
    EXPECT_FALSE(displays->setMode(2, DisplayMode{23, 3840, 2160, 3840, 2160, 30}));
    EXPECT_FALSE(displays->setMode(9, k1080));
    EXPECT_TRUE(server->calls.empty());

    server->failBegin = true;
    EXPECT_FALSE(displays->setMode(2, k1080));
    EXPECT_FALSE(displays->setEnabled(9, false, false));
    EXPECT_EQ(server->calls, (Lines{"begin", "begin"}));
    EXPECT_EQ(displays->currentMode(2)->id, 20);
    EXPECT_TRUE(logged().empty());
}

TEST_F(ConfigureTest, SetMainKeepsTheArrangementAndMirroringComesAndGoes) {
    startFixture();
    EXPECT_TRUE(displays->setMain(5));
    EXPECT_EQ(server->calls, (Lines{"begin", "main 5 ", "complete permanently"}));
    EXPECT_EQ(server->mainDisplay(), 5u);
    EXPECT_EQ(server->bounds(9).origin, (Point{4072, -300}));

    server->calls.clear();
    EXPECT_TRUE(displays->mirror(9, 2));
    EXPECT_EQ(displays->mirrorSource(9), 2u);
    EXPECT_TRUE(displays->mirror(9, 0));
    EXPECT_EQ(displays->mirrorSource(9), 0u);
    EXPECT_EQ(server->calls, (Lines{"begin", "mirror 9 2", "complete permanently", "begin",
                                    "mirror 9 0", "complete permanently"}));
    EXPECT_TRUE(logged().empty());
}

TEST_F(ConfigureTest, RefusesToDisconnectTheOnlyDisplayEvenAnExternalOne) {
    start(
        R"({ "displays": [ { "id": 2, "modes": [ { "id": 20, "width": 2560, "height": 1440 } ] } ] })");
    EXPECT_FALSE(displays->setEnabled(2, false, true));
    EXPECT_EQ(logged(), (Lines{"display 2: refusing to disconnect the only display"}));
    EXPECT_TRUE(server->calls.empty());
    EXPECT_TRUE(displays->disconnected().empty());
}

TEST_F(ConfigureTest, DisconnectRecordsExternalsQuietSuccessIsSilentAndFailureIsLogged) {
    // "abc" cannot be read back and is gone at the next save.
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"abc", "Junk"}, {"7", "Old TV"}});
    startFixture();
    displays->snapshot();
    EXPECT_TRUE(displays->setEnabled(9, false, false));
    EXPECT_EQ(server->calls, (Lines{"begin", "enable 9 off", "complete for session"}));
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{5, 2}));
    EXPECT_EQ(storedDisconnected(), json({{"7", "Old TV"}, {"9", "Projector"}}));
    EXPECT_EQ(displays->list().back(), test::offline(9, "Projector"));

    // The panel is listed through its remembered identifier instead of being recorded.
    EXPECT_TRUE(displays->setEnabled(5, false, true));
    EXPECT_EQ(displays->disconnected(), (Names{{7, "Old TV"}, {9, "Projector"}}));
    EXPECT_EQ(displays->list()[0].name, "Built-in Display");
    EXPECT_TRUE(displays->setEnabled(5, true, true));

    server->failComplete = 1001;
    EXPECT_FALSE(displays->setEnabled(9, true, true));
    EXPECT_EQ(storedDisconnected(), json({{"7", "Old TV"}, {"9", "Projector"}}));
    server->failComplete.reset();
    EXPECT_TRUE(displays->setEnabled(9, true, true));
    EXPECT_EQ(storedDisconnected(), json({{"7", "Old TV"}}));
    EXPECT_EQ(displays->onlineIDs().size(), 3u);
    EXPECT_EQ(logged(), (Lines{"display 9: disconnected (0)", "display 9: connected (1001)"}));
}

TEST_F(ConfigureTest, WithoutTheEnableEntryPointEveryChangeFailsWith1000) {
    start(R"({ "disconnect": false, "displays": [
      { "id": 5, "builtin": true, "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 9, "name": "Projector", "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    EXPECT_FALSE(displays->setEnabled(9, false, true));
    EXPECT_FALSE(displays->setEnabled(9, true, true));
    EXPECT_EQ(server->calls,
              (Lines{"begin", "enable 9 off", "cancel", "begin", "enable 9 on", "cancel"}));
    EXPECT_EQ(logged(),
              (Lines{"display 9: disconnect failed (1000)", "display 9: connect failed (1000)"}));
    // Recorded before the attempt, kept in memory, never saved: no completion was reached.
    EXPECT_EQ(displays->disconnected(), (Names{{9, "Projector"}}));
    EXPECT_FALSE(storedDisconnected().has_value());
}

TEST_F(ConfigureTest, ReconnectAllBringsBackWhatItCanAndKeepsTheRest) {
    // 7 was switched off in an earlier run and is no longer attached at all.
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"7", "Old TV"}});
    startFixture();
    ASSERT_TRUE(displays->setEnabled(9, false, true));
    ASSERT_TRUE(displays->setEnabled(2, false, true));
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{5}));

    displays->reconnectAll();
    EXPECT_EQ(displays->onlineIDs(), (std::vector<DisplayID>{9, 5, 2}));
    EXPECT_EQ(logged(), (Lines{"display 2: connected (0)", "display 7: connect failed (1001)",
                               "display 9: connected (0)"}));
    EXPECT_EQ(storedDisconnected(), json({{"7", "Old TV"}}));
}

}  // namespace
}  // namespace lumora
