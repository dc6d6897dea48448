#include "x11/X11Input.h"

#include <X11/XF86keysym.h>
#include <X11/keysym.h>
#include <gtest/gtest.h>
#include <poll.h>

#include "X11Fixture.h"

namespace lumora::lx {
namespace {

constexpr std::uint32_t kCommand = 0x100, kShift = 0x200, kOption = 0x800, kControl = 0x1000;
constexpr std::uint32_t kUp = 126, kB = 11;
constexpr unsigned int kBrightnessDownKeycode = 232, kBrightnessUpKeycode = 233;

class X11InputTest : public test::X11Fixture {
  protected:
    void SetUp() override {
        X11Fixture::SetUp();
        if (IsSkipped()) return;
        input = X11Input::open(display());
        ASSERT_TRUE(input);
        input->setHotKeyHandler([this](std::uint32_t id) { pressed.push_back(id); });
    }

    HotKeyHandle registered(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id) {
        const HotKeyRegistration r = input->registerHotKey(keyCode, modifiers, id);
        EXPECT_EQ(r.status, 0) << keyCode;
        EXPECT_NE(r.handle, kNoHotKey);
        return r.handle;
    }

    // Presses keys with xdotool and collects hot-key ids until `count` have come.
    std::vector<std::uint32_t> press(const std::vector<std::string>& keys, std::size_t count) {
        pressed.clear();
        std::vector<std::string> argv = {"xdotool", "key"};
        argv.insert(argv.end(), keys.begin(), keys.end());
        run(argv);
        test::pumpUntil(
            input->connectionFd(), [&] { input->dispatchPending(); },
            [&] { return pressed.size() >= count; });
        return pressed;
    }

    std::vector<BrightnessKeyEvent> tapKeys(const std::string& key, std::size_t count) {
        tapped.clear();
        run({"xdotool", "key", key});
        test::pumpUntil(
            input->connectionFd(), [&] { input->dispatchPending(); },
            [&] { return tapped.size() >= count; });
        return tapped;
    }

    // Brightness keys the focused window got, waiting a little for replayed ones to arrive.
    std::vector<unsigned int> brightnessKeysAtTheWindow(std::size_t atLeast) {
        std::vector<unsigned int> keys;
        for (int i = 0; i < 50; ++i) {
            for (unsigned int key : witness->pressesReceived()) {
                if (key == kBrightnessDownKeycode || key == kBrightnessUpKeycode)
                    keys.push_back(key);
            }
            if (keys.size() >= atLeast) break;
            poll(nullptr, 0, 20);
        }
        return keys;
    }

    std::unique_ptr<X11Input> input;
    std::vector<std::uint32_t> pressed;
    std::vector<BrightnessKeyEvent> tapped;
};

TEST_F(X11InputTest, HotKeysFireOncePerPressWhateverTheLockKeys) {
    const HotKeyHandle up = registered(kUp, kCommand | kControl | kOption, 7);
    registered(kB, kControl | kOption, 8);
    EXPECT_TRUE(input->isTrusted());

    EXPECT_EQ(press({"super+ctrl+alt+Up", "ctrl+alt+b"}, 2), (std::vector<std::uint32_t>{7, 8}));
    // Other modifiers held make another combination.
    EXPECT_EQ(press({"shift+super+ctrl+alt+Up", "ctrl+alt+b"}, 1), std::vector<std::uint32_t>{8});
    run({"xdotool", "key", "Num_Lock"});
    EXPECT_EQ(press({"super+ctrl+alt+Up"}, 1), std::vector<std::uint32_t>{7}) << "Num Lock on";
    run({"xdotool", "key", "Caps_Lock"});
    EXPECT_EQ(press({"super+ctrl+alt+Up"}, 1), std::vector<std::uint32_t>{7}) << "both on";
    run({"xdotool", "key", "Num_Lock"});
    EXPECT_EQ(press({"super+ctrl+alt+Up"}, 1), std::vector<std::uint32_t>{7}) << "Caps Lock on";
    // Held down, the key repeats; the shortcut does not.
    pressed.clear();
    run({"xdotool", "keydown", "super+ctrl+alt+Up", "sleep", "0.7", "keyup", "super+ctrl+alt+Up",
         "key", "ctrl+alt+b"});
    test::pumpUntil(
        input->connectionFd(), [&] { input->dispatchPending(); },
        [&] { return !pressed.empty() && pressed.back() == 8; });
    EXPECT_EQ(pressed, (std::vector<std::uint32_t>{7, 8}));

    input->unregisterHotKey(up);
    EXPECT_EQ(press({"super+ctrl+alt+Up", "ctrl+alt+b"}, 1), std::vector<std::uint32_t>{8});
}

// One key of each kind the map handles (letters, function and navigation keys, punctuation,
// a key X names differently, the keypad), not the whole table again.
TEST_F(X11InputTest, MapsTheCanonicalKeyCodesAndModifiers) {
    const struct {
        std::uint32_t keyCode;
        std::uint32_t modifiers;
        const char* keys;  // as xdotool names them
    } cases[] = {
        {4, kControl | kOption, "ctrl+alt+h"},
        {96, kShift | kControl, "shift+ctrl+F5"},
        {49, kCommand, "super+space"},
        {36, kOption, "alt+Return"},
        {123, kControl | kCommand, "ctrl+super+Left"},
        {42, kControl, "ctrl+backslash"},
        {105, kControl, "ctrl+XF86Tools"},  // F13 on a Linux keymap
        {83, kControl, "ctrl+KP_1"},
    };
    std::vector<std::string> keys;
    std::vector<std::uint32_t> expected;
    for (std::uint32_t i = 0; i < std::size(cases); ++i) {
        registered(cases[i].keyCode, cases[i].modifiers, 100 + i);
        keys.push_back(cases[i].keys);
        expected.push_back(100 + i);
    }
    EXPECT_EQ(press(keys, expected.size()), expected);
}

TEST_F(X11InputTest, RefusesCombinationsItCannotHave) {
    ASSERT_TRUE(witness->grabKey(XK_b, ControlMask | Mod1Mask));
    HotKeyRegistration refused = input->registerHotKey(kB, kControl | kOption, 1);
    EXPECT_EQ(refused.status, X11Input::kTaken) << "held by another client";
    EXPECT_EQ(refused.handle, kNoHotKey);
    registered(kUp, kControl, 2);
    refused = input->registerHotKey(kUp, kControl, 3);
    EXPECT_EQ(refused.status, X11Input::kTaken) << "the first registration wins";
    EXPECT_EQ(input->registerHotKey(0x7F, kControl, 4).status, X11Input::kUnknownKey);
    EXPECT_EQ(input->registerHotKey(0x50, kControl, 5).status, X11Input::kNotOnKeyboard) << "F19";
    // What was refused leaves nothing behind: the other client still gets its key.
    EXPECT_EQ(press({"ctrl+Up"}, 1), std::vector<std::uint32_t>{2});
}

TEST_F(X11InputTest, ShortcutsFollowTheKeyToItsNewKeycode) {
    registered(kUp, kCommand | kControl | kOption, 3);
    run({"xmodmap", "-e", "keycode 111 = NoSymbol", "-e", "keycode 93 = Up"});
    pollfd p{input->connectionFd(), POLLIN, 0};
    ASSERT_EQ(poll(&p, 1, 2000), 1);
    input->dispatchPending();
    EXPECT_EQ(press({"super+ctrl+alt+Up"}, 1), std::vector<std::uint32_t>{3});
}

TEST_F(X11InputTest, BrightnessKeysAreConsumedOrPassedOnAsTheHandlerSays) {
    witness->focusWindow();
    bool consume = true;
    ASSERT_TRUE(input->startTap([&](const BrightnessKeyEvent& e) {
        tapped.push_back(e);
        return consume;
    }));
    using Kind = BrightnessKeyEvent::Kind;
    const BrightnessKeyEvent upPressed{Kind::key, true, true, false};
    const BrightnessKeyEvent upReleased{Kind::key, true, false, false};

    EXPECT_EQ(tapKeys("XF86MonBrightnessUp", 2),
              (std::vector<BrightnessKeyEvent>{upPressed, upReleased}));
    EXPECT_TRUE(brightnessKeysAtTheWindow(0).empty()) << "consumed";

    EXPECT_EQ(tapKeys("shift+alt+XF86MonBrightnessUp", 2).at(0),
              (BrightnessKeyEvent{Kind::key, true, true, true}))
        << "fine steps with option and shift";
    EXPECT_EQ(tapKeys("alt+XF86MonBrightnessUp", 2).at(0), upPressed) << "option alone: normal";

    consume = false;
    EXPECT_EQ(tapKeys("XF86MonBrightnessDown", 1),
              (std::vector<BrightnessKeyEvent>{{Kind::key, false, true, false}}));
    EXPECT_EQ(brightnessKeysAtTheWindow(1), std::vector<unsigned int>{kBrightnessDownKeycode})
        << "replayed to the focused window";

    // Switched off, the keys go on without asking; back on, they are asked about again.
    input->enableTap(false);
    run({"xdotool", "key", "XF86MonBrightnessUp"});
    EXPECT_EQ(brightnessKeysAtTheWindow(1), std::vector<unsigned int>{kBrightnessUpKeycode});
    input->enableTap(true);
    consume = true;
    EXPECT_EQ(tapKeys("XF86MonBrightnessUp", 2).size(), 2u);

    input->stopTap();
    tapped.clear();
    run({"xdotool", "key", "XF86MonBrightnessUp"});
    EXPECT_EQ(brightnessKeysAtTheWindow(1), std::vector<unsigned int>{kBrightnessUpKeycode});
    input->dispatchPending();
    EXPECT_TRUE(tapped.empty());
}

TEST_F(X11InputTest, TheTapIsRefusedWhileAnotherClientHoldsTheKeys) {
    ASSERT_TRUE(witness->grabKey(XF86XK_MonBrightnessUp, AnyModifier));
    EXPECT_FALSE(input->startTap([](const BrightnessKeyEvent&) { return true; }));
    EXPECT_TRUE(witness->grabKey(XF86XK_MonBrightnessDown, AnyModifier))
        << "the key grabbed before the refusal was let go";
}

}  // namespace
}  // namespace lumora::lx
