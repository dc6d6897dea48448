// The brightness-key tap: swallow or pass, and starting under the permission.
#include <gtest/gtest.h>

#include "core/log/TestLog.h"
#include "input/MediaKeys.h"
#include "sim/SimInput.h"

namespace lumora {
namespace {

using Strings = std::vector<std::string>;
constexpr bool kUp = true, kDown = false, kPressed = true, kReleased = false;

class MediaKeysTest : public ::testing::Test, protected test::TestLog {
  protected:
    MediaKeysTest() {
        keys.onBrightness = [this](bool up, bool fine) {
            asked.push_back({up, fine});
            return handled;
        };
    }
    bool send(bool up, bool pressed, bool fine = false) {
        return input.sendBrightnessKey(up, pressed, fine);
    }

    sim::SimInput input{true};
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
    EXPECT_FALSE(send(kDown, kPressed, /*fine=*/true));
    EXPECT_FALSE(send(kDown, kReleased));
    EXPECT_EQ(asked, (std::vector<std::pair<bool, bool>>{{true, false}, {false, true}}));

    keys.onBrightness = nullptr;  // without a callback keys pass and the decision is cleared
    EXPECT_FALSE(send(kUp, kPressed));
    EXPECT_FALSE(send(kUp, kReleased));
}

TEST_F(MediaKeysTest, TapSwitchedOffBySystemIsReenabledAndTheNoticePassed) {
    ASSERT_TRUE(keys.start());
    EXPECT_FALSE(input.disableTap());
    EXPECT_TRUE(input.tapEnabled());
    EXPECT_TRUE(send(kUp, kPressed));
}

TEST_F(MediaKeysTest, StartNeedsThePermissionAndLogsOnlyTheOutcomeOfTheTap) {
    input.setTrusted(false);
    EXPECT_FALSE(keys.start());
    EXPECT_FALSE(input.tapInstalled());
    EXPECT_EQ(logged(), Strings{});  // silent: the settings section asks for the permission

    input.setTrusted(true);
    input.refuseTap(true);
    EXPECT_FALSE(keys.start());
    input.refuseTap(false);
    EXPECT_TRUE(keys.start());
    EXPECT_TRUE(keys.start());  // already on: nothing new
    EXPECT_TRUE(keys.active());
    EXPECT_EQ(logged(), (Strings{"brightness keys: event tap refused", "brightness keys: on"}));

    keys.stop();
    EXPECT_FALSE(input.tapInstalled());
    EXPECT_FALSE(send(kUp, kPressed));
    sim::SimInput own{true};
    {
        MediaKeys shortLived(own, log);
        ASSERT_TRUE(shortLived.start());
    }
    EXPECT_FALSE(own.tapInstalled());
}

}  // namespace
}  // namespace lumora
