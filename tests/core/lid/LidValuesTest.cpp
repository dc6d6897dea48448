// The lid configuration: its JSON coding and the description the log shows.
#include <gtest/gtest.h>

#include <limits>

#include "lid/LidConfig.h"

namespace lumora {
namespace {

using nlohmann::json;

constexpr const char* kDefaultText =
    R"({"closeAngle":5,"openAngle":15,"closeDebounce":1.5,"sleepDelay":600.0,)"
    R"("wakeSleepDelay":60.0,"panelRetry":5.0,"resleepInterval":1.0,)"
    R"("turnOffPanelWithExternal":true,"dimWhenClosed":true,)"
    R"("disconnectBuiltinWhenExternal":false})";

TEST(LidConfigCoding, EncodesAllKeysInOrderAndDecodesOnlyTheExactTypes) {
    const LidConfig custom{-3, 40, 0.25, 0, 12.5, 2, 0.1, false, false, true};
    EXPECT_EQ(LidConfig{}.toJsonText(), kDefaultText);
    EXPECT_EQ(LidConfig::fromJsonText(custom.toJsonText()), custom);
    // Integer durations, the extreme angles and unknown keys are fine.
    EXPECT_EQ(LidConfig::fromJsonText(
                  R"({"closeAngle":-9223372036854775808,"openAngle":9223372036854775807,)"
                  R"("closeDebounce":2,"sleepDelay":1e308,"wakeSleepDelay":-60,"panelRetry":0,)"
                  R"("resleepInterval":1,"turnOffPanelWithExternal":false,"dimWhenClosed":true,)"
                  R"("disconnectBuiltinWhenExternal":true,"futureKey":[1,2]})"),
              (LidConfig{std::numeric_limits<std::int64_t>::min(),
                         std::numeric_limits<std::int64_t>::max(), 2, 1e308, -60, 0, 1, false, true,
                         true}));

    // A missing key or a wrong type fails the whole value.
    const json complete = json::parse(kDefaultText);
    std::vector<json> bad = {nullptr, json::array(), 42};
    for (const auto& [key, value] : complete.items()) {
        bad.push_back(complete);
        bad.back().erase(key);
    }
    const std::pair<const char*, json> wrong[] = {
        {"closeAngle", 5.0},                    // a float is not an integer, even a whole one
        {"openAngle", 9223372036854775808ull},  // beyond the signed 64-bit range
        {"closeDebounce", true},
        {"panelRetry", std::numeric_limits<double>::infinity()},
        {"turnOffPanelWithExternal", 1},
        {"dimWhenClosed", "true"},
    };
    for (const auto& [key, value] : wrong) {
        bad.push_back(complete);
        bad.back()[key] = value;
    }
    for (const json& value : bad)
        EXPECT_EQ(LidConfig::fromJson(value), std::nullopt) << value.dump();

    // Text that is no JSON, however deeply it nests.
    for (const std::string& garbage : {std::string("{"), std::string(100000, '[')})
        EXPECT_EQ(LidConfig::fromJsonText(garbage), std::nullopt) << garbage.substr(0, 40);
}

TEST(LidConfigDescribe, NamesEveryFieldInOrderWithShortestNumbers) {
    EXPECT_EQ(LidConfig{}.describe(),
              "closeAngle=5 openAngle=15 closeDebounce=1.5 sleepDelay=600 wakeSleepDelay=60 "
              "panelRetry=5 resleepInterval=1 turnOffPanelWithExternal=true dimWhenClosed=true "
              "disconnectBuiltinWhenExternal=false");
    // Fixed or scientific, whichever is shorter; whole numbers written out exactly.
    const std::pair<double, const char*> numbers[] = {
        {0.001, "0.001"},   {0.0001, "1e-04"},
        {5e-324, "5e-324"}, {2.0 / 3, "0.6666666666666666"},
        {1e16, "1e+16"},    {123456789012345680.0, "123456789012345680"},
    };
    for (const auto& [value, text] : numbers) {
        LidConfig config;
        config.closeDebounce = value;
        EXPECT_NE(config.describe().find(std::string(" closeDebounce=") + text + " "),
                  std::string::npos)
            << config.describe();
    }
}

}  // namespace
}  // namespace lumora
