// Qt key events as the core's key events: hardware codes, modifiers per platform, and the
// characters the recorded label is built from.
#include <gtest/gtest.h>

#include "input/KeyCodes.h"
#include "ui/KeyTranslation.h"

namespace lumora::test {
namespace {

TEST(KeyTranslationTest, KeysTheCoreNamesGetTheirHardwareCodes) {
    const std::pair<int, std::uint32_t> table[] = {
        {Qt::Key_Left, 123},  {Qt::Key_Right, 124}, {Qt::Key_Down, 125},  {Qt::Key_Up, 126},
        {Qt::Key_Space, 49},  {Qt::Key_Return, 36}, {Qt::Key_Escape, 53}, {Qt::Key_Backspace, 51},
        {Qt::Key_Delete, 51}, {Qt::Key_F1, 122},    {Qt::Key_F2, 120},    {Qt::Key_F3, 99},
        {Qt::Key_F4, 118},    {Qt::Key_F5, 96},     {Qt::Key_F6, 97},     {Qt::Key_A, 0},
        {Qt::Key_B, 11},      {Qt::Key_H, 4},       {Qt::Key_K, 40},      {Qt::Key_Z, 6},
        {Qt::Key_0, 29},      {Qt::Key_1, 18},      {Qt::Key_9, 25},
    };
    for (const auto& [key, code] : table) {
        EXPECT_EQ(ui::hardwareKeyCode(key), code) << "Qt key " << key;
    }
    EXPECT_EQ(ui::hardwareKeyCode(Qt::Key_Exclam), 18u) << "Shift+1 is still the 1 key";
    EXPECT_EQ(ui::hardwareKeyCode(Qt::Key_Shift), std::nullopt);
    EXPECT_EQ(ui::hardwareKeyCode(Qt::Key_VolumeUp), std::nullopt);
}

TEST(KeyTranslationTest, ModifiersMapPerPlatform) {
    const auto linux = [](Qt::KeyboardModifiers m) { return ui::modifierFlags(m, false); };
    const auto mac = [](Qt::KeyboardModifiers m) { return ui::modifierFlags(m, true); };
    EXPECT_EQ(linux(Qt::ControlModifier), (ModifierFlags{Modifier::control}));
    EXPECT_EQ(linux(Qt::AltModifier), (ModifierFlags{Modifier::option}));
    EXPECT_EQ(linux(Qt::ShiftModifier), (ModifierFlags{Modifier::shift}));
    EXPECT_EQ(linux(Qt::MetaModifier), (ModifierFlags{Modifier::command}));
    EXPECT_EQ(mac(Qt::ControlModifier), (ModifierFlags{Modifier::command}));
    EXPECT_EQ(mac(Qt::MetaModifier), (ModifierFlags{Modifier::control}));
    EXPECT_EQ(mac(Qt::AltModifier | Qt::ShiftModifier),
              (ModifierFlags{Modifier::option, Modifier::shift}));
    EXPECT_EQ(linux(Qt::KeypadModifier), ModifierFlags{});
}

TEST(KeyTranslationTest, CharactersIgnoreModifiersAndNameTheOtherKeys) {
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_A), "a");
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_5), "5");
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_Slash), "/");
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_Question), "/");
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_F7), "F7");
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_Home), "Home");
    EXPECT_EQ(ui::charactersIgnoringModifiers(Qt::Key_Control), "");
}

TEST(KeyTranslationTest, EventsBuildTheShortcutsTheCoreExpects) {
    // Shift+Control+A on Linux: "⌃⇧A", mask 0x1200.
    auto event = ui::keyEventFrom(Qt::Key_A, Qt::ShiftModifier | Qt::ControlModifier, 0, false);
    ASSERT_TRUE(event.has_value());
    auto shortcut = Shortcut::from(*event);
    ASSERT_TRUE(shortcut.has_value());
    EXPECT_EQ(shortcut->keyCode, kKeyA);
    EXPECT_EQ(shortcut->modifiers, 0x1200u);
    EXPECT_EQ(shortcut->label, "⌃⇧A");

    // Option+Command+Space on a Mac keyboard under Qt: Alt and Control.
    event = ui::keyEventFrom(Qt::Key_Space, Qt::AltModifier | Qt::ControlModifier, 49, true);
    ASSERT_TRUE(event.has_value());
    shortcut = Shortcut::from(*event);
    ASSERT_TRUE(shortcut.has_value());
    EXPECT_EQ(shortcut->label, "⌥⌘Space");
    EXPECT_EQ(shortcut->modifiers, kMaskOption | kMaskCommand);

    // On macOS the native code is taken as it is, whatever the table says.
    event = ui::keyEventFrom(Qt::Key_Z, Qt::MetaModifier, 16, true);
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->keyCode, 16u);
    EXPECT_EQ(event->flags, (ModifierFlags{Modifier::control}));

    // Shift+Ctrl+2 arrives as "@" on X11.
    event = ui::keyEventFrom(Qt::Key_At, Qt::ShiftModifier | Qt::ControlModifier, 0, false);
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(Shortcut::from(*event)->label, "⌃⇧2");

    EXPECT_EQ(ui::keyEventFrom(Qt::Key_Shift, Qt::ShiftModifier, 56, true), std::nullopt);
    EXPECT_EQ(ui::keyEventFrom(Qt::Key_VolumeUp, Qt::ControlModifier, 0, false), std::nullopt);
}

}  // namespace
}  // namespace lumora::test
