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
    // Press order never shows: any permutation gives the same mask and label.
    const Shortcut all{kKeyB, 0x1B00, "⌃⌥⇧⌘B"};
    EXPECT_EQ(from(kKeyB, {M::command, M::shift, M::option, M::control}, "b"), all);
    EXPECT_EQ(from(kKeyB, {M::shift, M::command, M::control, M::option}, "b"), all);
}

TEST(ShortcutLabel, OtherSystemsReadTheStoredSymbolsAsWordsInAFixedOrder) {
    const std::pair<Shortcut, const char*> cases[] = {
        {{kKeyB, 0x1B00, "⌃⌥⇧⌘B"}, "Ctrl+Alt+Shift+Super+B"},
        {{kKeyUpArrow, 0x1900, "⌃⌥⌘↑"}, "Ctrl+Alt+Super+↑"},
        {{kKeySpace, 0x900, "⌥⌘Space"}, "Alt+Super+Space"},
        {{kKeyA, 0x1000, "⌃"}, "Ctrl"},            // a key that typed nothing
        {{kKeyA, 0x200, "K"}, "Shift+K"},          // an older label without its symbols
        {{kKeyA, 0x1000, "⌃⌃\xE2"}, "Ctrl+\xE2"},  // repeated symbols, broken UTF-8
    };
    for (const auto& [shortcut, words] : cases) {
        EXPECT_EQ(shownLabel(shortcut, KeyNames::words), words) << shortcut;
        EXPECT_EQ(shownLabel(shortcut, KeyNames::symbols), shortcut.label);
    }
}

TEST(ShortcutLabel, NamedKeysReplaceWhatTheSystemTypesAndOtherTextIsUpperCased) {
    // Function and arrow keys type private-use characters (U+F700…); the table names them up
    // to F6, so F7 keeps the system's own text. Typed text is upper-cased where that is one to
    // one (not ß), and in bytes that are not UTF-8 only ASCII letters change.
    const std::pair<std::uint32_t, const char*> named[] = {
        {kKeyLeftArrow, "⌃←"}, {kKeyEscape, "⌃⎋"}, {kKeyF6, "⌃F6"}, {kKeyF7, "⌃\uF70A"}};
    for (const auto& [code, label] : named)
        EXPECT_EQ(from(code, {M::control}, "\uF70A")->label, label) << code;
    const std::pair<const char*, const char*> typed[] = {
        {"z", "Z"}, {"и", "И"}, {"é", "É"},     {"ß", "ß"},
        {"÷", "÷"}, {"", ""},   {"ab😀", "AB😀"}, {"\xFFz", "\xFFZ"}};
    for (const auto& [text, shown] : typed)
        EXPECT_EQ(from(kKeyA, {M::control}, text)->label, std::string("⌃") + shown) << text;
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
    EXPECT_EQ(key(kKeyB, {M::control, M::option, M::command}, "b"),
              (RecordResult{O::recorded, Shortcut{kKeyB, 0x1900, "⌃⌥⌘B"}}));
}

}  // namespace
}  // namespace lumora
