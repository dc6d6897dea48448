// Action names, Shortcut JSON and the stored "shortcuts" map.
#include <gtest/gtest.h>

#include "input/ShortcutMap.h"
#include "platform/MemoryDefaults.h"

namespace lumora {
namespace {

using A = ShortcutAction;

constexpr const char* kUp = R"({"keyCode":126,"modifiers":6400,"label":"⌃⌥⌘↑"})";

void store(Defaults& d, std::string_view text) {
    d.setData(kShortcutsKey, Defaults::Bytes(text.begin(), text.end()));
}

std::string stored(const Defaults& d) {
    auto bytes = d.data(kShortcutsKey);
    return bytes ? std::string(bytes->begin(), bytes->end()) : "<absent>";
}

TEST(ShortcutActionNames, RawValuesAndTitlesInDeclarationOrder) {
    const std::tuple<A, const char*, const char*> expected[] = {
        {A::brightnessUp, "brightnessUp", "Ярче (монитор под курсором)"},
        {A::brightnessDown, "brightnessDown", "Темнее (монитор под курсором)"},
        {A::dimToBlack, "dimToBlack", "Погасить / вернуть монитор под курсором"},
        {A::toggleBuiltin, "toggleBuiltin", "Встроенный экран вкл/выкл"},
        {A::toggleHiDPI, "toggleHiDPI", "HiDPI вкл/выкл (монитор под курсором)"},
        {A::sleepDisplays, "sleepDisplays", "Усыпить все экраны"}};
    ASSERT_EQ(kAllShortcutActions.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const auto& [action, raw, shownTitle] = expected[i];
        EXPECT_EQ(kAllShortcutActions[i], action);
        EXPECT_EQ(rawValue(action), raw);
        EXPECT_EQ(title(action), shownTitle);
        EXPECT_EQ(shortcutActionFromRaw(raw), action);
    }
    for (const char* bad : {"", "BrightnessUp", "brightnessUp ", "toggleHidpi"}) {
        EXPECT_EQ(shortcutActionFromRaw(bad), std::nullopt) << bad;
    }
}

TEST(ShortcutJson, EncodesInFieldOrderAndDecodesStrictly) {
    const Shortcut up{126, 0x1900, "⌃⌥⌘↑"};
    EXPECT_EQ(up.toJson().dump(), kUp);
    EXPECT_EQ(Shortcut::fromJson(nlohmann::json::parse(kUp)), up);
    EXPECT_EQ(Shortcut::fromJson(
                  {{"label", "x"}, {"keyCode", 4294967295u}, {"modifiers", 0}, {"extra", true}}),
              (Shortcut{4294967295u, 0, "x"}));
    const char* bad[] = {
        R"({"modifiers":6400,"label":"a"})",
        R"({"keyCode":126,"label":"a"})",
        R"({"keyCode":126,"modifiers":6400})",
        R"({"keyCode":"126","modifiers":6400,"label":"a"})",
        R"({"keyCode":126.0,"modifiers":6400,"label":"a"})",
        R"({"keyCode":-1,"modifiers":6400,"label":"a"})",
        R"({"keyCode":126,"modifiers":4294967296,"label":"a"})",
        R"({"keyCode":126,"modifiers":6400,"label":null})",
        R"([126,6400,"a"])",
    };
    for (const char* text : bad) {
        EXPECT_EQ(Shortcut::fromJson(nlohmann::json::parse(text)), std::nullopt) << text;
    }
}

TEST(ShortcutStore, AbsentOrUndecodableDataGivesTheDefaults) {
    const ShortcutMap defaults{{A::brightnessUp, {126, 0x1900, "⌃⌥⌘↑"}},
                               {A::brightnessDown, {125, 0x1900, "⌃⌥⌘↓"}},
                               {A::dimToBlack, {11, 0x1900, "⌃⌥⌘B"}},
                               {A::toggleHiDPI, {4, 0x1900, "⌃⌥⌘H"}}};
    EXPECT_EQ(defaultShortcuts(), defaults);
    MemoryDefaults d;
    EXPECT_EQ(loadShortcuts(d), defaults);
    const std::string corrupt[] = {
        "not json",
        "",
        "[]",
        "null",
        R"({"brightnessUp":)",
        // One bad member spoils the whole map, whether its name is known or not.
        std::string(R"({"brightnessUp":)") + kUp + R"(,"dimToBlack":{"keyCode":11}})",
        std::string(R"({"brightnessUp":)") + kUp + R"(,"futureAction":42})",
    };
    for (const std::string& text : corrupt) {
        store(d, text);
        EXPECT_EQ(loadShortcuts(d), defaults) << text;
        EXPECT_EQ(stored(d), text);  // the bad data stays until the next save
    }
    d.setString(kShortcutsKey, std::string(R"({"brightnessUp":)") + kUp + "}");  // not data
    EXPECT_EQ(loadShortcuts(d), defaults);
}

TEST(ShortcutStore, StoredMapWinsUnknownNamesDroppedEmptyMeansNone) {
    MemoryDefaults d;
    store(d, "{}");
    EXPECT_EQ(loadShortcuts(d), ShortcutMap{});
    store(d, std::string(R"({"futureAction":)") + kUp + R"(,"sleepDisplays":)" + kUp + "}");
    EXPECT_EQ(loadShortcuts(d), (ShortcutMap{{A::sleepDisplays, {126, 0x1900, "⌃⌥⌘↑"}}}));
}

TEST(ShortcutStore, SaveWritesCompactJsonInActionOrderAndRoundTrips) {
    MemoryDefaults d;
    ShortcutMap map = defaultShortcuts();
    map.erase(A::dimToBlack);  // what Delete while recording leaves behind
    map[A::sleepDisplays] = {1, 0x300, "⇧⌘S"};
    saveShortcuts(d, map);
    EXPECT_EQ(stored(d), std::string(R"({"brightnessUp":)") + kUp +
                             R"(,"brightnessDown":{"keyCode":125,"modifiers":6400,"label":"⌃⌥⌘↓"})"
                             R"(,"toggleHiDPI":{"keyCode":4,"modifiers":6400,"label":"⌃⌥⌘H"})"
                             R"(,"sleepDisplays":{"keyCode":1,"modifiers":768,"label":"⇧⌘S"}})");
    EXPECT_EQ(loadShortcuts(d), map);
    saveShortcuts(d, {});
    EXPECT_EQ(stored(d), "{}");
    EXPECT_EQ(loadShortcuts(d), ShortcutMap{});
}

TEST(ShortcutStore, MapThatCannotBeEncodedRemovesTheKey) {
    MemoryDefaults d;
    saveShortcuts(d, defaultShortcuts());
    ASSERT_TRUE(d.contains(kShortcutsKey));
    saveShortcuts(d, {{A::toggleBuiltin, {1, 0x100, "⌘\xC3"}}});  // label cut inside a character
    EXPECT_FALSE(d.contains(kShortcutsKey));
    EXPECT_EQ(loadShortcuts(d), defaultShortcuts());
}

}  // namespace
}  // namespace lumora
