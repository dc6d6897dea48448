#include <gtest/gtest.h>

#include "DdcFakes.h"
#include "ddc/DDC.h"
#include "sim/VirtualScheduler.h"

namespace lumora {
namespace {

using test::edidWith;

constexpr std::uint32_t kDell = 0x10AC;
constexpr std::uint32_t kU27 = 0xA0B1;
constexpr std::uint32_t kLG = 0x1E6D;
constexpr std::uint32_t kLGModel = 0x5B08;

using Ids = test::FakeDisplays::Ids;

class DiscoveryTest : public ::testing::Test {
  protected:
    // An external monitor in the registry; without numbers its EDID cannot be read.
    std::shared_ptr<test::ScriptedChannel> monitor(std::optional<Ids> numbers,
                                                   std::string location = "External") {
        auto channel = av.add(std::move(location));
        if (numbers) channel->edid = edidWith(numbers->vendor, numbers->model, numbers->serial);
        channels.push_back(channel);
        return channel;
    }

    // Which registry entry (1-based) a service talks to, found by sending through it.
    std::uint64_t entryOf(const std::shared_ptr<DDCService>& service) {
        for (auto& c : channels)
            c->clear();
        service->write(0x10, 1);
        for (std::size_t i = 0; i < channels.size(); ++i) {
            if (!channels[i]->transfers().empty()) return i + 1;
        }
        return 0;
    }

    // display id -> registry entry
    std::map<DisplayID, std::uint64_t> pair(const std::vector<DisplayID>& ids) {
        std::map<DisplayID, std::uint64_t> result;
        for (const auto& [id, service] : DDC::services(av, displays, clock, ids)) {
            result[id] = entryOf(service);
        }
        return result;
    }

    sim::VirtualScheduler clock;
    test::FakeAVServices av{[this] { return clock.uptime(); }};
    test::FakeDisplays displays;
    std::vector<std::shared_ptr<test::ScriptedChannel>> channels;
};

using Pairs = std::map<DisplayID, std::uint64_t>;

TEST_F(DiscoveryTest, IdenticalMonitorsWithDistinctSerialsEachGetTheirOwn) {
    monitor(Ids{kDell, kU27, 222});
    monitor(Ids{kDell, kU27, 111});
    displays.ids = {{10, {kDell, kU27, 111}}, {11, {kDell, kU27, 222}}};
    EXPECT_EQ(pair({10, 11}), (Pairs{{10, 2}, {11, 1}}));
}

TEST_F(DiscoveryTest, DisplaySerialZeroPairsIdenticalMonitorsInRegistryOrder) {
    monitor(Ids{kDell, kU27, 5});
    monitor(Ids{kDell, kU27, 6});
    displays.ids = {{10, {kDell, kU27, 0}}, {11, {kDell, kU27, 0}}};
    EXPECT_EQ(pair({11, 10}), (Pairs{{11, 1}, {10, 2}}));
}

TEST_F(DiscoveryTest, DisplaySerialZeroMatchesTheFirstOfItsModelWhateverItsSerial) {
    monitor(Ids{kLG, kLGModel, 9});
    monitor(Ids{kDell, kU27, 77});
    displays.ids = {{10, {kDell, kU27, 0}}};
    EXPECT_EQ(pair({10}), (Pairs{{10, 2}}));
}

TEST_F(DiscoveryTest, SerialMismatchFallsBackToVendorAndProduct) {
    monitor(Ids{kLG, kLGModel, 1});
    monitor(Ids{kDell, kU27, 2});
    monitor(Ids{kDell, kU27, 3});
    // 10 reports a serial no channel has; 11's serial matches entry 3 exactly, but 10 came
    // first and took the first of the model.
    displays.ids = {{10, {kDell, kU27, 999}}, {11, {kDell, kU27, 3}}};
    EXPECT_EQ(pair({10, 11}), (Pairs{{10, 2}, {11, 3}}));
    EXPECT_EQ(pair({11, 10}), (Pairs{{11, 3}, {10, 2}}));
}

TEST_F(DiscoveryTest, SecondPassHandsTheRestOutInRegistryOrder) {
    monitor(std::nullopt);  // EDID unreadable
    monitor(Ids{kDell, kU27, 4});
    monitor(std::nullopt);
    displays.ids = {
        {10, {kLG, kLGModel, 0}}, {11, {kDell, kU27, 4}}, {12, {kLG, 7, 0}}, {13, {1, 2, 3}}};
    EXPECT_EQ(pair({10, 11, 12, 13}), (Pairs{{10, 1}, {11, 2}, {12, 3}}));
}

TEST_F(DiscoveryTest, OnlyExternalEntriesAreOpenedAndPaired) {
    monitor(Ids{0x0610, 0xA0C8, 0}, "Embedded");
    monitor(Ids{0x0610, 0xA0C8, 0}, "external");
    monitor(Ids{0x0610, 0xA0C8, 0}, "");
    monitor(Ids{kDell, kU27, 1});
    displays.ids = {{1, {0x0610, 0xA0C8, 0}}, {2, {kDell, kU27, 1}}};
    EXPECT_EQ(pair({1, 2}), (Pairs{{2, 4}}));
    EXPECT_EQ(av.created, (std::vector<std::uint64_t>{4}));
}

TEST_F(DiscoveryTest, ChannelsThatCannotBeCreatedAreSkipped) {
    av.add("External", false);
    monitor(std::nullopt);
    displays.ids = {{10, {}}, {11, {}}};
    std::map<DisplayID, bool> got;
    for (const auto& [id, service] : DDC::services(av, displays, clock, {10, 11}))
        got[id] = true;
    EXPECT_EQ(got, (std::map<DisplayID, bool>{{10, true}}));
    EXPECT_EQ(av.created, (std::vector<std::uint64_t>{1, 2}));
}

TEST_F(DiscoveryTest, NothingWithoutTheCreateEntryPoint) {
    monitor(Ids{kDell, kU27, 1});
    displays.ids = {{10, {kDell, kU27, 1}}};
    av.createEntry = false;
    EXPECT_TRUE(DDC::services(av, displays, clock, {10}).empty());
    EXPECT_TRUE(av.created.empty());
}

}  // namespace
}  // namespace lumora
