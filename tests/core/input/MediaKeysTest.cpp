// The brightness-key tap: decoding, swallow or pass, and starting under the permission.
#include <gtest/gtest.h>

#include "InputScenario.h"
#include "input/BrightnessKey.h"
#include "input/MediaKeys.h"

namespace lumora {
namespace {

using M = Modifier;
using Strings = std::vector<std::string>;

constexpr std::int64_t kUp = 2, kDown = 3, kVolumeUp = 0, kMute = 7;
constexpr std::int64_t kPressed = 0x0A, kReleased = 0x0B;

std::int64_t data1(std::int64_t code, std::int64_t state) {
    return (code << 16) | (state << 8);
}

std::optional<BrightnessKey> decode(std::int64_t d1, ModifierFlags flags = {},
                                    std::int32_t subtype = kAuxControlButtonsSubtype,
                                    SystemEventKind kind = SystemEventKind::systemDefined) {
    return decodeBrightnessKey({kind, subtype, d1, flags});
}

TEST(BrightnessKeyDecoding, OnlyCodesTwoAndThreeOfSubtypeEight) {
    EXPECT_EQ(decode(data1(kUp, kPressed)), (BrightnessKey{true, true, false}));
    EXPECT_EQ(decode(data1(kDown, kReleased)), (BrightnessKey{false, false, false}));
    EXPECT_EQ(decode(data1(kDown, kPressed) | 1), (BrightnessKey{false, true, false}));  // repeat
    EXPECT_EQ(decode(data1(kUp, 0x00)), (BrightnessKey{true, false, false}));
    EXPECT_EQ(decode(data1(kUp, kPressed), {M::option, M::shift}),
              (BrightnessKey{true, true, true}));
    EXPECT_EQ(decode(data1(kUp, kPressed), {M::option, M::shift, M::command})->fine, true);
    EXPECT_EQ(decode(data1(kUp, kPressed), {M::option})->fine, false);
    EXPECT_EQ(decode(data1(kUp, kPressed), {M::shift})->fine, false);
    for (std::int64_t code :
         {kVolumeUp, std::int64_t{1}, kMute, std::int64_t{16}, std::int64_t{0x102}}) {
        EXPECT_EQ(decode(data1(code, kPressed)), std::nullopt) << code;
    }
    EXPECT_EQ(decode(data1(kUp, kPressed) | (std::int64_t{1} << 32)), std::nullopt);
    EXPECT_EQ(decode(-data1(kUp, kPressed)), std::nullopt);
    EXPECT_EQ(decode(data1(kUp, kPressed), {}, 7), std::nullopt);
    EXPECT_EQ(decode(data1(kUp, kPressed), {}, 8, SystemEventKind::other), std::nullopt);
}

class MediaKeysTest : public ::testing::Test, protected test::InputScenario {
  protected:
    MediaKeysTest() {
        keys.onBrightness = [this](bool up, bool fine) {
            asked.push_back({up, fine});
            return handled;
        };
    }
    bool send(std::int64_t code, std::int64_t state, ModifierFlags flags = {}) {
        return input.sendSystemDefined(kAuxControlButtonsSubtype, data1(code, state), flags);
    }

    MediaKeys keys{input, log};
    bool handled = true;
    std::vector<std::pair<bool, bool>> asked;  // (up, fine)
};

TEST_F(MediaKeysTest, KeyUpFollowsWhatHappenedToItsKeyDown) {
    ASSERT_TRUE(keys.start());
    EXPECT_FALSE(send(kUp, kReleased));  // no down seen yet: nothing was swallowed
    EXPECT_TRUE(send(kUp, kPressed));    // over an external monitor
    EXPECT_TRUE(send(kUp, kReleased));
    EXPECT_TRUE(send(kDown, kReleased));  // a stray key-up follows the last decision
    handled = false;                      // over the built-in panel
    EXPECT_FALSE(send(kDown, kPressed, {M::option, M::shift}));
    EXPECT_FALSE(send(kDown, kReleased));
    EXPECT_EQ(asked, (std::vector<std::pair<bool, bool>>{{true, false}, {false, true}}));
}

TEST_F(MediaKeysTest, WithoutCallbackKeysPassAndTheDecisionIsCleared) {
    ASSERT_TRUE(keys.start());
    EXPECT_TRUE(send(kUp, kPressed));
    keys.onBrightness = nullptr;
    EXPECT_FALSE(send(kUp, kPressed));
    EXPECT_FALSE(send(kUp, kReleased));
}

TEST_F(MediaKeysTest, OtherKeysAndEventsPassUntouched) {
    ASSERT_TRUE(keys.start());
    ASSERT_TRUE(send(kUp, kPressed));  // a swallowed down must not capture other keys' ups
    EXPECT_FALSE(send(kVolumeUp, kPressed));
    EXPECT_FALSE(send(kMute, kReleased));
    EXPECT_FALSE(input.sendSystemDefined(7, data1(kUp, kPressed)));
    EXPECT_FALSE(input.send({SystemEventKind::other, 8, data1(kUp, kPressed), {}}));
    EXPECT_EQ(asked.size(), 1u);
}

TEST_F(MediaKeysTest, TapSwitchedOffBySystemIsReenabledAndTheNoticePassed) {
    ASSERT_TRUE(keys.start());
    for (auto reason :
         {SystemEventKind::tapDisabledByTimeout, SystemEventKind::tapDisabledByUserInput}) {
        EXPECT_FALSE(input.disableTap(reason));
        EXPECT_TRUE(input.tapEnabled());
    }
    EXPECT_TRUE(send(kUp, kPressed));
}

TEST_F(MediaKeysTest, StartNeedsThePermissionAndLogsOnlyTheOutcomeOfTheTap) {
    input.setTrusted(false);
    EXPECT_FALSE(keys.start());
    EXPECT_FALSE(keys.active());
    EXPECT_FALSE(input.tapInstalled());
    EXPECT_EQ(logged(), Strings{});  // silent: the settings section asks for the permission

    input.setTrusted(true);
    input.refuseTap(true);
    EXPECT_FALSE(keys.start());
    EXPECT_FALSE(keys.active());
    input.refuseTap(false);
    EXPECT_TRUE(keys.start());
    EXPECT_TRUE(keys.start());  // already on: nothing new
    EXPECT_TRUE(keys.active());
    EXPECT_EQ(logged(), (Strings{"brightness keys: event tap refused", "brightness keys: on"}));
}

TEST_F(MediaKeysTest, StopDropsTheTapUntilStartedAgain) {
    ASSERT_TRUE(keys.start());
    keys.stop();
    EXPECT_FALSE(keys.active());
    EXPECT_FALSE(input.tapInstalled());
    EXPECT_FALSE(send(kUp, kPressed));
    EXPECT_TRUE(asked.empty());
    EXPECT_TRUE(keys.start());
    EXPECT_TRUE(send(kUp, kPressed));
    EXPECT_EQ(logged(), (Strings{"brightness keys: on", "brightness keys: on"}));
}

TEST_F(MediaKeysTest, GoingAwayTakesTheTapWithIt) {
    sim::SimInput own{true};
    {
        MediaKeys shortLived(own, log);
        ASSERT_TRUE(shortLived.start());
    }
    EXPECT_FALSE(own.tapInstalled());
    EXPECT_FALSE(own.sendSystemDefined(kAuxControlButtonsSubtype, data1(kUp, kPressed)));
}

}  // namespace
}  // namespace lumora
