// The lid value types: LidConfig coding and description, LidMode raw values.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "lid/LidConfig.h"
#include "lid/LidMode.h"

namespace lumora {
namespace {

using nlohmann::json;

constexpr const char* kDefaultText =
    R"({"closeAngle":5,"openAngle":15,"closeDebounce":1.5,"sleepDelay":600.0,)"
    R"("wakeSleepDelay":60.0,"panelRetry":5.0,"resleepInterval":1.0,)"
    R"("turnOffPanelWithExternal":true,"dimWhenClosed":true,)"
    R"("disconnectBuiltinWhenExternal":false})";

const LidConfig kCustom{-3, 40, 0.25, 0, 12.5, 2, 0.1, false, false, true};

TEST(LidConfigCoding, EncodesAllKeysInOrderAndRoundTrips) {
    EXPECT_EQ(LidConfig{}.toJsonText(), kDefaultText);
    EXPECT_EQ(LidConfig::fromJsonText(kDefaultText), LidConfig{});
    EXPECT_EQ(LidConfig::fromJsonText(kCustom.toJsonText()), kCustom);
    EXPECT_EQ(LidConfig::fromJson(kCustom.toJson()), kCustom);
    // Integer durations, the extreme angles and unknown keys are fine.
    EXPECT_EQ(LidConfig::fromJsonText(
                  R"({"closeAngle":-9223372036854775808,"openAngle":9223372036854775807,)"
                  R"("closeDebounce":2,"sleepDelay":1e308,"wakeSleepDelay":-60,"panelRetry":0,)"
                  R"("resleepInterval":1,"turnOffPanelWithExternal":false,"dimWhenClosed":true,)"
                  R"("disconnectBuiltinWhenExternal":true,"futureKey":[1,2]})"),
              (LidConfig{std::numeric_limits<std::int64_t>::min(),
                         std::numeric_limits<std::int64_t>::max(), 2, 1e308, -60, 0, 1, false, true,
                         true}));
}

TEST(LidConfigCoding, AMissingKeyOrAWrongTypeFailsTheWholeValue) {
    const json complete = json::parse(kDefaultText);
    for (const auto& [key, value] : complete.items()) {
        SCOPED_TRACE(key);
        json missing = complete;
        missing.erase(key);
        EXPECT_EQ(LidConfig::fromJson(missing), std::nullopt);
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
        SCOPED_TRACE(std::string(key) + "=" + value.dump());
        json bad = complete;
        bad[key] = value;
        EXPECT_EQ(LidConfig::fromJson(bad), std::nullopt);
    }
}

TEST(LidConfigCoding, GarbageTextYieldsNothing) {
    const std::string inputs[] = {
        "",
        "{",
        "null",
        "[]",
        "42",
        std::string("\xff\xfe\x00\x01", 4),
        std::string(kDefaultText) + "x",
        std::string(kDefaultText).replace(std::string(kDefaultText).find("1.5"), 3, "1e400"),
        std::string(100000, '[')};
    for (const std::string& text : inputs) {
        SCOPED_TRACE(text.substr(0, 40));
        EXPECT_EQ(LidConfig::fromJsonText(text), std::nullopt);
    }
}

TEST(LidConfigDescribe, NamesEveryFieldInOrderWithShortestNumbers) {
    EXPECT_EQ(LidConfig{}.describe(),
              "closeAngle=5 openAngle=15 closeDebounce=1.5 sleepDelay=600 wakeSleepDelay=60 "
              "panelRetry=5 resleepInterval=1 turnOffPanelWithExternal=true dimWhenClosed=true "
              "disconnectBuiltinWhenExternal=false");
    EXPECT_EQ(kCustom.describe(),
              "closeAngle=-3 openAngle=40 closeDebounce=0.25 sleepDelay=0 wakeSleepDelay=12.5 "
              "panelRetry=2 resleepInterval=0.1 turnOffPanelWithExternal=false "
              "dimWhenClosed=false disconnectBuiltinWhenExternal=true");
}

TEST(LidModeRaw, FourRawValuesRoundTripAndNothingElseDecodes) {
    const char* const raw[] = {"unknown", "open", "closedExternal", "closedAlone"};
    for (LidMode mode :
         {LidMode::unknown, LidMode::open, LidMode::closedExternal, LidMode::closedAlone}) {
        EXPECT_EQ(rawValue(mode), raw[static_cast<int>(mode)]);
        EXPECT_EQ(lidModeFromRaw(raw[static_cast<int>(mode)]), mode);
    }
    for (const char* other : {"closed", "", "Open", "closedAlone "})
        EXPECT_EQ(lidModeFromRaw(other), std::nullopt) << other;
}

}  // namespace
}  // namespace lumora
