#include <gtest/gtest.h>

#include "DisplayScenario.h"

namespace lumora {
namespace {

using nlohmann::json;

constexpr const char* kFixture = "laptopDockedMonitorAndProjector.json";

// An external monitor alone, and a closed laptop whose panel is not in the online list.
constexpr const char* kClamshell = R"({
  "displays": [
    { "id": 5, "name": "Built-in Retina Display", "builtin": true, "online": false,
      "modes": [ { "id": 10, "width": 1512, "height": 982, "pixelWidth": 3024 } ] },
    { "id": 2, "name": "Office Monitor", "vendor": 4268, "model": 41234, "serial": 12345,
      "modes": [ { "id": 20, "width": 2560, "height": 1440, "refresh": 60 } ] },
    { "id": 9, "name": "Projector", "vendor": 9999, "model": 7,
      "modes": [ { "id": 30, "width": 1920, "height": 1080, "refresh": 60 } ] }
  ]
})";

DisplayInfo offline(DisplayID id, std::string name, bool builtin) {
    DisplayInfo info;
    info.id = id;
    info.name = std::move(name);
    info.isBuiltin = builtin;
    info.isAsleep = true;
    return info;
}

using InventoryTest = test::DisplayScenario;

TEST_F(InventoryTest, ListsOnlineDisplaysBuiltinFirstThenByIdentifier) {
    startFixture(kFixture);
    const auto list = displays->list();
    ASSERT_EQ(list.size(), 3u);

    DisplayInfo panel;
    panel.id = 5;
    panel.name = "Built-in Retina Display";
    panel.isBuiltin = true;
    panel.isOnline = true;
    panel.mode = DisplayMode{10, 1512, 982, 3024, 1964, 120};
    panel.vendor = 1552;
    panel.model = 41240;
    EXPECT_EQ(list[0], panel);  // first although the office monitor is main

    DisplayInfo office;
    office.id = 2;
    office.name = "Office Monitor";
    office.isMain = true;
    office.isOnline = true;
    office.mode = DisplayMode{20, 2560, 1440, 2560, 1440, 60};
    office.vendor = 4268;
    office.model = 41234;
    office.serial = 12345;
    EXPECT_EQ(list[1], office);

    DisplayInfo projector;
    projector.id = 9;
    projector.name = "Projector";
    projector.isOnline = true;
    projector.mode = DisplayMode{30, 1920, 1080, 1920, 1080, 60};
    projector.rotation = 90;
    projector.vendor = 9999;
    projector.model = 7;
    EXPECT_EQ(list[2], projector);
}

TEST_F(InventoryTest, ListsTheThreeKindsOfEntries) {
    defaults.setInteger(Displays::kBuiltinIDKey, 5);
    defaults.setStringDictionary(Displays::kDisconnectedKey,
                                 {{"7", "Old TV"}, {"2", "Office (stored)"}, {"3", "Bedroom"}});
    start(kClamshell);
    const auto list = displays->list();

    std::vector<DisplayID> order;
    for (const auto& d : list)
        order.push_back(d.id);
    // Placeholder first (built-in), then everything else by id; online 2 is not repeated.
    EXPECT_EQ(order, (std::vector<DisplayID>{5, 2, 3, 7, 9}));

    EXPECT_EQ(list[0], offline(5, "Built-in Display", true));
    EXPECT_EQ(list[1].name, "Office Monitor");
    EXPECT_TRUE(list[1].isOnline);
    EXPECT_EQ(list[2], offline(3, "Bedroom", false));
    EXPECT_EQ(list[3], offline(7, "Old TV", false));
    EXPECT_TRUE(list[4].isOnline);
}

TEST_F(InventoryTest, OfflinePanelRecordedAsDisconnectedIsListedOnceWithItsStoredName) {
    defaults.setInteger(Displays::kBuiltinIDKey, 5);
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"5", "Retina (stored)"}});
    start(kClamshell);
    const auto list = displays->list();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0], offline(5, "Retina (stored)", true));
    EXPECT_EQ(list[1].id, 2u);
    EXPECT_EQ(list[2].id, 9u);
}

TEST_F(InventoryTest, NoOnlineDisplayLeavesStoredEntriesAndReportsNothingAwake) {
    defaults.setInteger(Displays::kBuiltinIDKey, 5);
    defaults.setStringDictionary(Displays::kDisconnectedKey, {{"9", "Projector"}});
    start(R"({ "displays": [
      { "id": 5, "builtin": true, "online": false, "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 9, "online": false, "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    EXPECT_TRUE(displays->onlineIDs().empty());
    EXPECT_EQ(displays->list(), (std::vector<DisplayInfo>{offline(5, "Built-in Display", true),
                                                          offline(9, "Projector", false)}));
    EXPECT_EQ(displays->snapshot(), (Displays::Snapshot{0, false, true}));
    EXPECT_EQ(displays->builtinID(), 5u);
}

TEST_F(InventoryTest, NamesComeFromScreenThenCacheThenStoredThenFallbacks) {
    defaults.setStringDictionary(Displays::kDisconnectedKey,
                                 {{"2", "Office (stored)"}, {"7", "Old TV"}});
    start(R"({ "displays": [
      { "id": 5, "builtin": true, "name": "Built-in Retina Display",
        "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 2, "name": "Office Monitor", "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 9, "name": "Projector", "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 11, "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    // A display that mirrors another has no screen of its own.
    ASSERT_TRUE(displays->mirror(5, 2));
    ASSERT_TRUE(displays->mirror(9, 2));
    EXPECT_EQ(displays->name(5), "Built-in Display");
    EXPECT_EQ(displays->name(9), "Display 9");
    EXPECT_EQ(displays->name(2), "Office Monitor");  // the screen beats the stored name
    EXPECT_EQ(displays->name(7), "Old TV");
    EXPECT_EQ(displays->name(11), "Display 11");  // an unnamed screen falls through the chain
    EXPECT_EQ(displays->name(4000000000u), "Display 4000000000");

    machine->setOnline(2, false);
    // Gone from the screens, but the name seen earlier sticks for the life of the object.
    EXPECT_EQ(displays->name(2), "Office Monitor");
    ASSERT_TRUE(displays->mirror(9, 0));
    EXPECT_EQ(displays->name(9), "Projector");
    ASSERT_TRUE(displays->mirror(9, 11));
    EXPECT_EQ(displays->name(9), "Projector");
}

TEST_F(InventoryTest, VirtualDisplaysByVendorOrByRegisteredIdentifier) {
    start(R"({ "displays": [
      { "id": 5, "builtin": true, "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 2, "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 9, "modes": [ { "id": 1, "width": 800, "height": 600 } ] },
      { "id": 40, "vendor": 19533, "modes": [ { "id": 1, "width": 800, "height": 600 } ] } ] })");
    EXPECT_TRUE(displays->virtualIDs().empty());
    EXPECT_TRUE(displays->isVirtual(40));  // vendor 0x4C4D alone suffices
    EXPECT_FALSE(displays->isVirtual(9));
    EXPECT_EQ(displays->snapshot().externals, 2);

    displays->addVirtualID(9);
    EXPECT_TRUE(displays->isVirtual(9));
    EXPECT_EQ(displays->snapshot().externals, 1);
    const auto list = displays->list();
    EXPECT_EQ(list.back().id, 40u);
    EXPECT_TRUE(list.back().isVirtual);
    EXPECT_TRUE(list[2].isVirtual);  // 9

    displays->setVirtualIDs({2, 9});
    EXPECT_EQ(displays->snapshot().externals, 0);
    displays->removeVirtualID(2);
    EXPECT_EQ(displays->virtualIDs(), (std::set<DisplayID>{9}));
    EXPECT_EQ(displays->snapshot().externals, 1);
}

TEST_F(InventoryTest, ModesAreTheSelectableOnesAndCurrentModeFollowsTheServer) {
    startFixture(kFixture);
    std::vector<std::string> labels;
    for (const auto& m : displays->modes(2))
        labels.push_back(m.label());
    // 22 repeats 20 but for its pixel height; 23 is not usable.
    EXPECT_EQ(labels, (std::vector<std::string>{"2560×1440 · 60 Hz", "1920×1080 · 60 Hz",
                                                "1280×720 HiDPI · 60 Hz"}));
    EXPECT_EQ(displays->currentMode(2), (DisplayMode{20, 2560, 1440, 2560, 1440, 60}));
    EXPECT_EQ(displays->currentMode(77), std::nullopt);
    EXPECT_TRUE(displays->modes(77).empty());
}

TEST_F(InventoryTest, SnapshotRemembersTheBuiltinPanelOnlyWhenItChanges) {
    startFixture(kFixture);
    EXPECT_EQ(displays->builtinID(), 0u);
    EXPECT_FALSE(defaults.contains(Displays::kBuiltinIDKey));

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

TEST_F(InventoryTest, SnapshotDoesNotRewriteAnUnchangedBuiltinIdentifier) {
    defaults.setNumber(Displays::kBuiltinIDKey, 5.0);  // an integer stored as a double
    startFixture(kFixture);
    EXPECT_EQ(displays->builtinID(), 5u);
    displays->snapshot();
    EXPECT_TRUE(defaults.object(Displays::kBuiltinIDKey)->is_number_float());
}

TEST_F(InventoryTest, CorruptStoredBuiltinIdentifierCountsAsUnknown) {
    startFixture(kFixture);
    const json corrupt[] = {json("5"), json(-1),         json(4294967296LL),
                            json(5.5), json::array({5}), json(true)};
    for (const auto& value : corrupt) {
        defaults.set(Displays::kBuiltinIDKey, value);
        Displays fresh(*server, defaults, *log_);
        EXPECT_EQ(fresh.builtinID(), 0u) << value;
    }
    defaults.set(Displays::kBuiltinIDKey, json(4294967295LL));
    EXPECT_EQ(Displays(*server, defaults, *log_).builtinID(), 4294967295u);
}

TEST_F(InventoryTest, CorruptStoredDisconnectedDictionaryFallsBackToEmpty) {
    startFixture(kFixture);
    const json corrupt[] = {
        json::array({"9", "Projector"}),
        json("9=Projector"),
        json({{"9", "Projector"}, {"7", 3}}),  // one value that is not a string spoils all
        json({{"9", nullptr}}),
    };
    for (const auto& value : corrupt) {
        defaults.set(Displays::kDisconnectedKey, value);
        Displays fresh(*server, defaults, *log_);
        EXPECT_TRUE(fresh.disconnected().empty()) << value;
    }
    // Keys are decimal 32-bit numbers; anything else is dropped alone.
    defaults.set(Displays::kDisconnectedKey, json({{"abc", "Junk"},
                                                   {"-3", "Negative"},
                                                   {"+4", "Signed"},
                                                   {" 6", "Blank"},
                                                   {"4294967296", "Too big"},
                                                   {"", "Empty"},
                                                   {"007", "Bond"},
                                                   {"4294967295", "Largest"}}));
    Displays fresh(*server, defaults, *log_);
    EXPECT_EQ(fresh.disconnected(),
              (std::map<DisplayID, std::string>{{7, "Bond"}, {4294967295u, "Largest"}}));
}

}  // namespace
}  // namespace lumora
