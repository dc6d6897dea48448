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

TEST(ShortcutActionNames, RawValuesRoundTripExactly) {
    for (A action : kAllShortcutActions)
        EXPECT_EQ(shortcutActionFromRaw(rawValue(action)), action) << rawValue(action);
    EXPECT_EQ(shortcutActionFromRaw("BrightnessUp"), std::nullopt);
}

TEST(ShortcutJson, EncodesInFieldOrderAndDecodesStrictly) {
    const Shortcut up{126, 0x1900, "⌃⌥⌘↑"};
    EXPECT_EQ(up.toJson().dump(), kUp);
    EXPECT_EQ(Shortcut::fromJson(nlohmann::json::parse(kUp)), up);
    EXPECT_EQ(Shortcut::fromJson(
                  {{"label", "x"}, {"keyCode", 4294967295u}, {"modifiers", 0}, {"extra", true}}),
              (Shortcut{4294967295u, 0, "x"}));
    // A missing key, then a wrong type or range for each field.
    const char* bad[] = {
        R"({"modifiers":6400,"label":"a"})",
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

TEST(ShortcutStore, AbsentOrUndecodableDataGivesTheDefaultsAnEmptyMapNone) {
    const ShortcutMap defaults = defaultShortcuts();
    MemoryDefaults d;
    EXPECT_EQ(loadShortcuts(d), defaults);
    const std::string up = std::string(R"({"brightnessUp":)") + kUp;
    // One bad member spoils the whole map, whether its name is known or not.
    for (const std::string& text :
         {std::string("not json"), std::string("[]"), up + R"(,"dimToBlack":{"keyCode":11}})",
          up + R"(,"futureAction":42})"}) {
        store(d, text);
        EXPECT_EQ(loadShortcuts(d), defaults) << text;
        EXPECT_EQ(stored(d), text);  // the bad data stays until the next save
    }
    d.setString(kShortcutsKey, up + "}");  // not data
    EXPECT_EQ(loadShortcuts(d), defaults);

    store(d, "{}");
    EXPECT_EQ(loadShortcuts(d), ShortcutMap{});
    // Members of unknown actions are dropped.
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
    // A label cut inside a character cannot be encoded: the key goes, the defaults return.
    saveShortcuts(d, {{A::toggleBuiltin, {1, 0x100, "⌘\xC3"}}});
    EXPECT_FALSE(d.contains(kShortcutsKey));
    EXPECT_EQ(loadShortcuts(d), defaultShortcuts());
}

}  // namespace
}  // namespace lumora
