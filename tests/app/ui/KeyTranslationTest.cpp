// Qt key events as the core's key events: hardware codes, modifiers per platform, and the
// characters the recorded label is built from.
#include <gtest/gtest.h>

#include "input/KeyCodes.h"
#include "ui/KeyTranslation.h"

namespace lumora::test {
namespace {

TEST(KeyTranslationTest, KeysTheCoreNamesGetTheirHardwareCodes) {
    // One key of each kind; Backspace and Delete share the Mac's delete key.
    const std::pair<int, std::uint32_t> table[] = {
        {Qt::Key_Up, 126},    {Qt::Key_Space, 49}, {Qt::Key_Escape, 53}, {Qt::Key_Backspace, 51},
        {Qt::Key_Delete, 51}, {Qt::Key_F1, 122},   {Qt::Key_K, 40},      {Qt::Key_0, 29},
    };
    for (const auto& [key, code] : table) {
        EXPECT_EQ(ui::hardwareKeyCode(key), code) << "Qt key " << key;
    }
    EXPECT_EQ(ui::hardwareKeyCode(Qt::Key_Exclam), 18u) << "Shift+1 is still the 1 key";
    EXPECT_EQ(ui::hardwareKeyCode(Qt::Key_Shift), std::nullopt);
    EXPECT_EQ(ui::hardwareKeyCode(Qt::Key_VolumeUp), std::nullopt);
}

TEST(KeyTranslationTest, ModifiersMapPerPlatformAndCharactersIgnoreThem) {
    struct Case {
        Qt::KeyboardModifiers qt;
        bool mac;
        ModifierFlags flags;
    };
    const Case modifiers[] = {
        {Qt::ControlModifier, false, {Modifier::control}},
        {Qt::AltModifier, false, {Modifier::option}},
        {Qt::ShiftModifier, false, {Modifier::shift}},
        {Qt::MetaModifier, false, {Modifier::command}},
        {Qt::KeypadModifier, false, {}},
        {Qt::ControlModifier, true, {Modifier::command}},
        {Qt::MetaModifier, true, {Modifier::control}},
        {Qt::AltModifier | Qt::ShiftModifier, true, {Modifier::option, Modifier::shift}},
    };
    for (const Case& c : modifiers)
        EXPECT_EQ(ui::modifierFlags(c.qt, c.mac), c.flags) << c.qt.toInt() << " mac " << c.mac;

    const std::pair<int, const char*> characters[] = {
        {Qt::Key_A, "a"},   {Qt::Key_5, "5"},       {Qt::Key_Slash, "/"},  {Qt::Key_Question, "/"},
        {Qt::Key_F7, "F7"}, {Qt::Key_Home, "Home"}, {Qt::Key_Control, ""},
    };
    for (const auto& [key, text] : characters)
        EXPECT_EQ(ui::charactersIgnoringModifiers(key), text) << "Qt key " << key;
}

TEST(KeyTranslationTest, EventsBuildTheShortcutsTheCoreExpects) {
    const auto shortcut = [](int key, Qt::KeyboardModifiers modifiers, std::uint32_t native,
                             bool mac) -> std::optional<Shortcut> {
        auto event = ui::keyEventFrom(key, modifiers, native, mac);
        return event ? Shortcut::from(*event) : std::nullopt;
    };
    const auto controlShift = Qt::ShiftModifier | Qt::ControlModifier;
    EXPECT_EQ(shortcut(Qt::Key_A, controlShift, 0, false),
              (Shortcut{kKeyA, kMaskControl | kMaskShift, "⌃⇧A"}));
    // Shift+Ctrl+2 arrives as "@" on X11.
    EXPECT_EQ(shortcut(Qt::Key_At, controlShift, 0, false),
              (Shortcut{19, kMaskControl | kMaskShift, "⌃⇧2"}));
    // Option+Command+Space on a Mac keyboard under Qt: Alt and Control; the native code is
    // taken as it is, whatever the table says.
    EXPECT_EQ(shortcut(Qt::Key_Space, Qt::AltModifier | Qt::ControlModifier, 49, true),
              (Shortcut{49, kMaskOption | kMaskCommand, "⌥⌘Space"}));
    EXPECT_EQ(shortcut(Qt::Key_Z, Qt::MetaModifier, 16, true), (Shortcut{16, kMaskControl, "⌃Z"}));
    EXPECT_EQ(shortcut(Qt::Key_Shift, Qt::ShiftModifier, 56, true), std::nullopt);
    EXPECT_EQ(shortcut(Qt::Key_VolumeUp, Qt::ControlModifier, 0, false), std::nullopt);
}

}  // namespace
}  // namespace lumora::test
