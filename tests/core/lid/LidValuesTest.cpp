// The lid value types: LidConfig coding and description, LidMode raw values, LidAction
// equality.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "lid/LidAction.h"
#include "lid/LidConfig.h"
#include "lid/LidMode.h"

namespace lumora {
namespace {

using A = LidAction;

constexpr const char* kDefaultText =
    R"({"closeAngle":5,"openAngle":15,"closeDebounce":1.5,"sleepDelay":600.0,)"
    R"("wakeSleepDelay":60.0,"panelRetry":5.0,"resleepInterval":1.0,)"
    R"("turnOffPanelWithExternal":true,"dimWhenClosed":true,)"
    R"("disconnectBuiltinWhenExternal":false})";

const char* const kKeys[] = {"closeAngle",      "openAngle",
                             "closeDebounce",   "sleepDelay",
                             "wakeSleepDelay",  "panelRetry",
                             "resleepInterval", "turnOffPanelWithExternal",
                             "dimWhenClosed",   "disconnectBuiltinWhenExternal"};

LidConfig custom() {
    return {-3, 40, 0.25, 0, 12.5, 2, 0.1, false, false, true};
}

TEST(LidConfigCoding, EncodesAllKeysInDeclarationOrderAndRoundTrips) {
    EXPECT_EQ(LidConfig{}.toJsonText(), kDefaultText);
    EXPECT_EQ(LidConfig::fromJsonText(kDefaultText), LidConfig{});
    EXPECT_EQ(LidConfig::fromJson(LidConfig{}.toJson()), LidConfig{});
    EXPECT_EQ(LidConfig::fromJsonText(custom().toJsonText()), custom());
    EXPECT_EQ(LidConfig::fromJson(nlohmann::json(custom().toJson())), custom());
    EXPECT_NE(custom(), LidConfig{});
}

TEST(LidConfigCoding, EachMissingKeyFailsTheWholeValue) {
    for (const char* key : kKeys) {
        SCOPED_TRACE(key);
        nlohmann::json json = nlohmann::json::parse(kDefaultText);
        ASSERT_EQ(json.erase(key), 1u);
        EXPECT_EQ(LidConfig::fromJson(json), std::nullopt);
        EXPECT_EQ(LidConfig::fromJsonText(json.dump()), std::nullopt);
    }
}

TEST(LidConfigCoding, ValuesOfTheWrongTypeFail) {
    struct Case {
        const char* key;
        nlohmann::json value;
    } cases[] = {
        {"closeAngle", "5"},
        {"closeAngle", 5.0},  // a float is not an integer, even a whole one
        {"openAngle", true},
        {"openAngle", nullptr},
        {"openAngle", 9223372036854775808ull},  // beyond the signed 64-bit range
        {"closeDebounce", true},
        {"sleepDelay", "600"},
        {"wakeSleepDelay", nlohmann::json::array({60})},
        {"panelRetry", std::numeric_limits<double>::infinity()},
        {"resleepInterval", std::nan("")},
        {"turnOffPanelWithExternal", 1},
        {"dimWhenClosed", "true"},
        {"disconnectBuiltinWhenExternal", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.key) + "=" + c.value.dump());
        nlohmann::json json = nlohmann::json::parse(kDefaultText);
        json[c.key] = c.value;
        EXPECT_EQ(LidConfig::fromJson(json), std::nullopt);
    }
}

TEST(LidConfigCoding, AcceptsIntegerDurationsExtremeAnglesAndUnknownKeys) {
    auto decoded = LidConfig::fromJsonText(
        R"({"closeAngle":-9223372036854775808,"openAngle":9223372036854775807,)"
        R"("closeDebounce":2,"sleepDelay":1e308,"wakeSleepDelay":-60,"panelRetry":0,)"
        R"("resleepInterval":1,"turnOffPanelWithExternal":false,"dimWhenClosed":true,)"
        R"("disconnectBuiltinWhenExternal":true,"futureKey":[1,2]})");
    LidConfig expected{std::numeric_limits<std::int64_t>::min(),
                       std::numeric_limits<std::int64_t>::max(),
                       2,
                       1e308,
                       -60,
                       0,
                       1,
                       false,
                       true,
                       true};
    EXPECT_EQ(decoded, expected);
}

TEST(LidConfigCoding, GarbageTextYieldsNothing) {
    const std::string inputs[] = {
        "",
        "{",
        "null",
        "[]",
        "42",
        "\"lidConfig\"",
        std::string("\xff\xfe\x00\x01", 4),
        R"({"closeAngle":5,"openAngle":15)",
        std::string(kDefaultText) + "x",
        R"({"closeAngle":5,"openAngle":15,"closeDebounce":1e400,"sleepDelay":600,)"
        R"("wakeSleepDelay":60,"panelRetry":5,"resleepInterval":1,)"
        R"("turnOffPanelWithExternal":true,"dimWhenClosed":true,)"
        R"("disconnectBuiltinWhenExternal":false})",
        std::string(100000, '['),
    };
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
    EXPECT_EQ(custom().describe(),
              "closeAngle=-3 openAngle=40 closeDebounce=0.25 sleepDelay=0 wakeSleepDelay=12.5 "
              "panelRetry=2 resleepInterval=0.1 turnOffPanelWithExternal=false "
              "dimWhenClosed=false disconnectBuiltinWhenExternal=true");
}

TEST(LidModeRaw, FourRawValuesRoundTripAndNothingElseDecodes) {
    for (LidMode mode :
         {LidMode::unknown, LidMode::open, LidMode::closedExternal, LidMode::closedAlone}) {
        EXPECT_EQ(lidModeFromRaw(rawValue(mode)), mode);
    }
    EXPECT_EQ(rawValue(LidMode::closedExternal), "closedExternal");
    EXPECT_EQ(lidModeFromRaw("closedAlone"), LidMode::closedAlone);
    for (const char* raw : {"closed", "", "Open", "closedAlone ", "unknown\n"}) {
        EXPECT_EQ(lidModeFromRaw(raw), std::nullopt) << raw;
    }
}

TEST(LidActionValue, EqualityComparesPayloadsOnlyWhereThereAreAny) {
    EXPECT_NE(A::setPanel(true), A::setPanel(false));
    EXPECT_NE(A::setPanel(true), A::dimBuiltin(true));
    EXPECT_NE(A::dimBuiltin(true), A::dimBuiltin(false));
    EXPECT_NE(A::displaySleep(), A::systemSleep());
    EXPECT_NE(A::wakeDisplay(), A::displaySleep());
    EXPECT_EQ(A::log("a"), A::log("a"));
    EXPECT_NE(A::log("a"), A::log("b"));
    EXPECT_NE(A::log(""), A::displaySleep());
    // Leftover fields of a payload-less action do not matter.
    EXPECT_EQ((A{A::Kind::displaySleep, true, "x"}), A::displaySleep());
    EXPECT_NE((A{A::Kind::log, true, "x"}), A::log("y"));
}

}  // namespace
}  // namespace lumora
