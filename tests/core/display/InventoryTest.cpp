#include <gtest/gtest.h>

#include "DisplayScenario.h"

namespace lumora {
namespace {

using nlohmann::json;
using Names = std::map<DisplayID, std::string>;
using test::offline;

// A closed laptop whose panel is not in the online list, an office monitor and a projector.
constexpr const char* kClamshell = R"({ "displays": [
  { "id": 5, "builtin": true, "online": false, "modes": [ { "id": 10, "width": 1512, "height": 982 } ] },
  { "id": 2, "name": "Office Monitor", "modes": [ { "id": 20, "width": 2560, "height": 1440 } ] },
  { "id": 9, "name": "Projector", "modes": [ { "id": 30, "width": 1920, "height": 1080 } ] } ] })";

using InventoryTest = test::DisplayScenario;

std::vector<DisplayID> ids(const std::vector<DisplayInfo>& list) {
    std::vector<DisplayID> out;
    for (const auto& d : list)
        out.push_back(d.id);
    return out;
}

TEST_F(InventoryTest, ListsOnlineDisplaysBuiltinFirstThenByIdentifier) {
    startFixture();
    // The panel comes first although the office monitor is main.
    const auto list = displays->list();
    EXPECT_EQ(ids(list), (std::vector<DisplayID>{5, 2, 9}));
    EXPECT_EQ(list[0], (DisplayInfo{.id = 5,
                                    .name = "Built-in Retina Display",
                                    .isBuiltin = true,
                                    .isOnline = true,
                                    .mode = DisplayMode{10, 1512, 982, 3024, 1964, 120},
                                    .vendor = 1552,
                                    .model = 41240}));
    EXPECT_TRUE(list[1].isMain);
    EXPECT_EQ(list[1].serial, 12345u);
    EXPECT_EQ(list[2].rotation, 90);
    std::vector<std::string> labels;
    for (const auto& m : displays->modes(2))
        labels.push_back(m.label());
    // 22 repeats 20 but for its pixel height; 23 is not usable.
    EXPECT_EQ(labels, (std::vector<std::string>{"2560×1440 · 60 Hz", "1920×1080 · 60 Hz",
                                                "1280×720 HiDPI · 60 Hz"}));
    EXPECT_EQ(displays->currentMode(77), std::nullopt);
}

TEST_F(InventoryTest, ListsSwitchedOffDisplaysAndTheAbsentPanel) {
    defaults.setInteger(Displays::kBuiltinIDKey, 5);
    defaults.setStringDictionary(Displays::kDisconnectedKey,
                                 {{"7", "Old TV"}, {"2", "Office (stored)"}, {"3", "Bedroom"}});
    start(kClamshell);
    const auto list = displays->list();
    // The placeholder (built-in) first, then by id; the online 2 is not repeated.
    EXPECT_EQ(ids(list), (std::vector<DisplayID>{5, 2, 3, 7, 9}));
    EXPECT_EQ(list[0], offline(5, "Built-in Display", true));
    EXPECT_EQ(list[2], offline(3, "Bedroom"));
    EXPECT_EQ(list[3], offline(7, "Old TV"));

    // A panel recorded as switched off is listed once, with its stored name.
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"5", "Retina (stored)"}});
    Displays stored(*server, defaults, log);
    EXPECT_EQ(stored.list().front(), offline(5, "Retina (stored)", true));
    EXPECT_EQ(stored.list().size(), 3u);
}

TEST_F(InventoryTest, NamesComeFromScreenThenCacheThenStoredThenFallbacks) {
    defaults.setStringDictionary(Displays::kDisconnectedKey,
                                 {{"2", "Office (stored)"}, {"7", "Old TV"}});
    start(R"({ "displays": [
      { "id": 5, "builtin": true, "name": "Retina", "modes": [ { "id": 1, "width": 8, "height": 6 } ] },
      { "id": 2, "name": "Office Monitor", "modes": [ { "id": 1, "width": 8, "height": 6 } ] },
      { "id": 9, "name": "Projector", "modes": [ { "id": 1, "width": 8, "height": 6 } ] },
      { "id": 11, "modes": [ { "id": 1, "width": 8, "height": 6 } ] } ] })");
    // A display that mirrors another has no screen of its own.
    ASSERT_TRUE(displays->mirror(5, 2));
    ASSERT_TRUE(displays->mirror(9, 2));
    EXPECT_EQ(displays->name(5), "Built-in Display");
    EXPECT_EQ(displays->name(9), "Display 9");
    EXPECT_EQ(displays->name(2), "Office Monitor");  // the screen beats the stored name
    EXPECT_EQ(displays->name(7), "Old TV");
    EXPECT_EQ(displays->name(11), "Display 11");  // an unnamed screen falls through the chain

    machine->setOnline(2, false);
    // Gone from the screens, but a name seen earlier sticks for the life of the object.
    EXPECT_EQ(displays->name(2), "Office Monitor");
    ASSERT_TRUE(displays->mirror(9, 0));
    EXPECT_EQ(displays->name(9), "Projector");
    ASSERT_TRUE(displays->mirror(9, 11));
    EXPECT_EQ(displays->name(9), "Projector");
}

TEST_F(InventoryTest, VirtualDisplaysByVendorOrByRegisteredIdentifier) {
    start(R"({ "displays": [
      { "id": 5, "builtin": true, "modes": [ { "id": 1, "width": 8, "height": 6 } ] },
      { "id": 9, "modes": [ { "id": 1, "width": 8, "height": 6 } ] },
      { "id": 40, "vendor": 19533, "modes": [ { "id": 1, "width": 8, "height": 6 } ] } ] })");
    EXPECT_TRUE(displays->isVirtual(40));  // vendor 0x4C4D alone suffices
    EXPECT_FALSE(displays->isVirtual(9));
    EXPECT_TRUE(displays->list().back().isVirtual);
    EXPECT_EQ(displays->snapshot().externals, 1);

    displays->addVirtualID(9);
    EXPECT_TRUE(displays->list()[1].isVirtual);
    EXPECT_EQ(displays->snapshot().externals, 0);
}

TEST_F(InventoryTest, SnapshotRemembersTheBuiltinPanelWhenItChanges) {
    startFixture();
    EXPECT_EQ(displays->builtinID(), 0u);
    EXPECT_EQ(displays->snapshot(), (Displays::Snapshot{2, true, false}));
    EXPECT_EQ(displays->builtinID(), 5u);
    EXPECT_EQ(defaults.object(Displays::kBuiltinIDKey), json(5));

    machine->setAsleep(5, true);
    EXPECT_EQ(displays->snapshot(), (Displays::Snapshot{2, true, true}));
    machine->setOnline(5, false);
    machine->setOnline(9, false);
    EXPECT_EQ(displays->snapshot(), (Displays::Snapshot{1, false, true}));
    // The panel stays remembered while it is away, and is listed through that memory.
    EXPECT_EQ(displays->list().front(), offline(5, "Built-in Display", true));
}

TEST_F(InventoryTest, CorruptStoredValuesFallBack) {
    startFixture();
    for (const json& value : {json("5"), json(-1), json(4294967296LL)}) {
        defaults.set(Displays::kBuiltinIDKey, value);
        EXPECT_EQ(Displays(*server, defaults, log).builtinID(), 0u) << value;
    }
    // One value that is not a string spoils the whole dictionary.
    for (const json& value : {json("9=Projector"), json({{"9", "Projector"}, {"7", 3}})}) {
        defaults.set(Displays::kDisconnectedKey, value);
        EXPECT_TRUE(Displays(*server, defaults, log).disconnected().empty()) << value;
    }
    // Keys are decimal 32-bit numbers; anything else is dropped alone.
    defaults.set(Displays::kDisconnectedKey, json::parse(R"({"abc": "Junk", "-3": "Negative",
        "6 ": "Trailing", "4294967296": "Too big", "": "Empty", "007": "Bond",
        "4294967295": "Largest"})"));
    EXPECT_EQ(Displays(*server, defaults, log).disconnected(),
              (Names{{7, "Bond"}, {4294967295u, "Largest"}}));
}

}  // namespace
}  // namespace lumora
