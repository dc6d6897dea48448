// Turning a key-down into a shortcut and its label, and what a key does while recording.
#include <gtest/gtest.h>

#include "input/KeyCodes.h"
#include "input/Recording.h"
#include "input/Shortcut.h"

namespace lumora {
namespace {

using M = Modifier;

std::optional<Shortcut> from(std::uint32_t keyCode, ModifierFlags flags, std::string chars) {
    return Shortcut::from(KeyEvent{keyCode, flags, std::move(chars)});
}

TEST(ShortcutLabel, ModifiersAlwaysPrintAsControlOptionShiftCommand) {
    EXPECT_EQ(from(kKeyA, {M::shift, M::control}, "a"), (Shortcut{kKeyA, 0x1200, "⌃⇧A"}));
    EXPECT_EQ(from(kKeySpace, {M::command, M::option}, " "),
              (Shortcut{kKeySpace, 0x900, "⌥⌘Space"}));
    EXPECT_EQ(from(kKeyReturn, {M::control}, "\r"), (Shortcut{kKeyReturn, 0x1000, "⌃↩"}));
    // Press order never shows: every permutation gives the same mask and label.
    const Shortcut all{kKeyB, 0x1B00, "⌃⌥⇧⌘B"};
    EXPECT_EQ(from(kKeyB, {M::command, M::shift, M::option, M::control}, "b"), all);
    EXPECT_EQ(from(kKeyB, {M::option, M::control, M::command, M::shift}, "b"), all);
    EXPECT_EQ(from(kKeyB, {M::shift, M::command, M::control, M::option}, "b"), all);
}

TEST(ShortcutLabel, NamedKeysReplaceWhatTheSystemTypes) {
    // Function and arrow keys type private-use characters (U+F700…); the table names them.
    const std::pair<std::uint32_t, const char*> named[] = {
        {kKeyLeftArrow, "←"}, {kKeyRightArrow, "→"}, {kKeyDownArrow, "↓"}, {kKeyUpArrow, "↑"},
        {kKeySpace, "Space"}, {kKeyReturn, "↩"},     {kKeyEscape, "⎋"},    {kKeyF1, "F1"},
        {kKeyF2, "F2"},       {kKeyF3, "F3"},        {kKeyF4, "F4"},       {kKeyF5, "F5"},
        {kKeyF6, "F6"}};
    for (const auto& [code, name] : named) {
        SCOPED_TRACE(code);
        EXPECT_EQ(from(code, {M::command}, "\uF704")->label, std::string("⌘") + name);
    }
    // The table stops at F6: F7 keeps the system's own text.
    EXPECT_EQ(from(kKeyF7, {M::command}, "\uF70A")->label, "⌘\uF70A");
}

TEST(ShortcutLabel, KeyTextIsUpperCasedWhereThatIsOneToOne) {
    const std::pair<const char*, const char*> texts[] = {
        {"z", "Z"},
        {"1", "1"},
        {"и", "И"},
        {"ё", "Ё"},
        {"é", "É"},
        {"ß", "ß"},
        {"÷", "÷"},
        {"", ""},
        {"ab", "AB"},
        {"\xFF"
         "a",
         "\xFF"
         "A"},  // not UTF-8: only ASCII letters change
    };
    for (const auto& [typed, shown] : texts) {
        SCOPED_TRACE(typed);
        EXPECT_EQ(from(kKeyA, {M::control}, typed)->label, std::string("⌃") + shown);
    }
}

TEST(ShortcutLabel, PlainKeysAndLockOrFunctionAloneAreRefused) {
    EXPECT_EQ(from(kKeyA, {}, "a"), std::nullopt);
    EXPECT_EQ(from(kKeyA, {M::capsLock}, "A"), std::nullopt);
    EXPECT_EQ(from(kKeyF1, {M::function}, "\uF704"), std::nullopt);
    EXPECT_EQ(from(kKeyA, {M::capsLock, M::function, M::option}, "a"),
              (Shortcut{kKeyA, 0x800, "⌥A"}));
}

TEST(Recording, EscapeCancelsDeleteClearsPlainKeysWaitCombinationsRecord) {
    using O = RecordOutcome;
    auto key = [](std::uint32_t code, ModifierFlags flags, const char* chars) {
        return handleRecordingKey(KeyEvent{code, flags, chars});
    };
    EXPECT_EQ(key(kKeyEscape, {}, "\x1B"), (RecordResult{O::cancel, std::nullopt}));
    // Even with modifiers held: neither key can be recorded itself.
    EXPECT_EQ(key(kKeyEscape, {M::control}, "\x1B"), (RecordResult{O::cancel, std::nullopt}));
    EXPECT_EQ(key(kKeyDelete, {M::command}, "\x7F"), (RecordResult{O::clear, std::nullopt}));
    EXPECT_EQ(key(kKeyB, {}, "b"), (RecordResult{O::keepRecording, std::nullopt}));
    EXPECT_EQ(key(kKeyB, {M::capsLock}, "b"), (RecordResult{O::keepRecording, std::nullopt}));
    EXPECT_EQ(key(kKeyB, {M::control, M::option, M::command}, "b"),
              (RecordResult{O::recorded, Shortcut{kKeyB, 0x1900, "⌃⌥⌘B"}}));
}

}  // namespace
}  // namespace lumora
