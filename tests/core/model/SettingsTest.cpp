// Stored settings as the model reads them at construction, including corrupt ones: each falls
// back to its documented default without a word in the log.
#include <gtest/gtest.h>

#include "ModelScenario.h"

namespace lumora::test {
namespace {

class Settings : public ModelScenario {
  protected:
    void setText(std::string_view key, const std::string& text) {
        defaults.setData(key, Defaults::Bytes(text.begin(), text.end()));
    }
    void build() { boot(fixtureWorld("laptopAndExternal.json")); }
};

TEST_F(Settings, ColorAdjustEntriesAreAllOrNothingButForeignKeysAreDropped) {
    ColorAdjust dim;
    dim.dim = 0.4;
    const auto entry = dim.toJson().dump();
    setText(kColorAdjustKey, R"({"3": )" + entry + R"(, "abc": )" + entry + R"(, "+4": )" + entry +
                                 R"(, "4294967296": )" + entry + "}");
    build();
    EXPECT_EQ(model->color().get(), (ColorMap{{3, dim}}));

    for (const std::string& bad : {R"({"3": )" + entry + R"(, "5": {"dim": 0.4}})",
                                   std::string("[1, 2]"), std::string("{\"3\": ")}) {
        setText(kColorAdjustKey, bad);
        build();
        EXPECT_TRUE(model->color()->empty()) << bad;
    }
    defaults.setString(kColorAdjustKey, R"({"3": )" + entry + "}");  // a string, not data
    build();
    EXPECT_TRUE(model->color()->empty());
}

TEST_F(Settings, NothingOrCorruptStoredFallsBackToTheDefaultsSilently) {
    for (bool corrupt : {false, true}) {
        if (corrupt) {
            setText(kLidConfigKey, R"({"closeAngle": "five"})");
            setText(kShortcutsKey, R"({"brightnessUp": {"keyCode": 1}})");
            defaults.setInteger(kBrightnessKeysKey, 0);
            defaults.setString(kPreventSleepKey, "yes");
        }
        build();
        EXPECT_TRUE(model->color()->empty());
        EXPECT_EQ(model->lidConfig().get(), LidConfig{});
        EXPECT_EQ(model->shortcuts().get(), defaultShortcuts());
        EXPECT_TRUE(model->brightnessKeys().get());
        EXPECT_FALSE(model->preventSleepWithExternal().get());
        EXPECT_TRUE(model->virtualHiDPI().get());
        EXPECT_FALSE(model->launchAgentInstalled());
    }
    EXPECT_TRUE(logged().empty());

    LidConfig config;
    config.closeAngle = 3;
    setText(kLidConfigKey, config.toJsonText());
    setText(kShortcutsKey, "{}");  // no bindings at all, not the defaults
    defaults.setBoolean(kBrightnessKeysKey, false);
    defaults.setBoolean(kPreventSleepKey, true);
    build();
    model->start();
    EXPECT_EQ(model->lidConfig().get(), config);
    EXPECT_TRUE(model->shortcuts()->empty());
    EXPECT_TRUE(machine->input().registrations().empty());
    EXPECT_FALSE(model->brightnessKeys().get());
    EXPECT_FALSE(machine->input().tapInstalled());
    EXPECT_EQ(machine->state()["power"]["assertions"].size(), 1u);
}

TEST_F(Settings, LaunchAgentFileIsSeenAtConstruction) {
    std::filesystem::create_directories(session.launchAgentFile().parent_path());
    writeFile(session.launchAgentFile(), "[Desktop Entry]\n");
    build();
    EXPECT_TRUE(model->launchAgentInstalled());
    EXPECT_EQ(session.statusFile(), dir.path() / "home/.local/state/lumora/status.json");
}

}  // namespace
}  // namespace lumora::test
