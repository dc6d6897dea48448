// Building a shortcut and its printed label from a key-down event.
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "base/Utf8.h"
#include "input/KeyCodes.h"
#include "input/Shortcut.h"

namespace lumora {

namespace {

// Keys whose typed character is missing or unreadable get a name instead. Only F1 to F6 are
// named: other function keys keep whatever text the system gives for them.
constexpr std::array<std::pair<std::uint32_t, std::string_view>, 13> kKeyNames{{
    {kKeyLeftArrow, "←"},
    {kKeyRightArrow, "→"},
    {kKeyDownArrow, "↓"},
    {kKeyUpArrow, "↑"},
    {kKeySpace, "Space"},
    {kKeyReturn, "↩"},
    {kKeyEscape, "⎋"},
    {kKeyF1, "F1"},
    {kKeyF2, "F2"},
    {kKeyF3, "F3"},
    {kKeyF4, "F4"},
    {kKeyF5, "F5"},
    {kKeyF6, "F6"},
}};

// Fixed symbol order, whatever order the keys went down in.
struct ModifierSymbol {
    Modifier modifier;
    std::uint32_t mask;
    std::string_view symbol;
};
constexpr std::array<ModifierSymbol, 4> kModifierSymbols{{
    {Modifier::control, kMaskControl, "⌃"},
    {Modifier::option, kMaskOption, "⌥"},
    {Modifier::shift, kMaskShift, "⇧"},
    {Modifier::command, kMaskCommand, "⌘"},
}};
// The same modifiers as PC keyboards name them.
constexpr std::array<std::string_view, 4> kModifierWords{"Ctrl", "Alt", "Shift", "Super"};

// Upper case for the scripts a keyboard layout here is likely to type: ASCII, Latin-1 and
// basic Cyrillic (a Russian layout reports Cyrillic letters). Letters without a one-to-one
// upper case (ß, ÿ) and everything else stay as they are.
char32_t upperCase(char32_t c) {
    if (c >= U'a' && c <= U'z') return c - 0x20;
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return c - 0x20;  // à…þ, not ÷
    if (c >= 0x430 && c <= 0x44F) return c - 0x20;             // а…я
    if (c >= 0x450 && c <= 0x45F) return c - 0x50;             // ѐ…џ, ё among them
    return c;
}

std::string upperCased(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    if (!isValidUtf8(text)) {
        // Bytes of unknown meaning: only plain ASCII letters are safe to change.
        for (char ch : text) {
            out += (ch >= 'a' && ch <= 'z') ? static_cast<char>(ch - 0x20) : ch;
        }
        return out;
    }
    std::size_t i = 0;
    while (i < text.size()) {
        char32_t c = 0;
        i += decodeUtf8(text.substr(i), c);  // never 0: the text is valid UTF-8
        appendUtf8(out, upperCase(c));
    }
    return out;
}

std::string keyText(const KeyEvent& event) {
    for (const auto& [code, name] : kKeyNames) {
        if (code == event.keyCode) return std::string(name);
    }
    return upperCased(event.charactersIgnoringModifiers);
}

}  // namespace

std::string shownLabel(const Shortcut& shortcut, KeyNames names) {
    if (names == KeyNames::symbols) return shortcut.label;
    // The key is what follows the modifier symbols the label starts with.
    std::string_view key = shortcut.label;
    for (bool stripped = true; stripped;) {
        stripped = false;
        for (const ModifierSymbol& m : kModifierSymbols) {
            if (key.starts_with(m.symbol)) {
                key.remove_prefix(m.symbol.size());
                stripped = true;
            }
        }
    }
    std::string out;
    for (std::size_t i = 0; i < kModifierSymbols.size(); ++i) {
        if ((shortcut.modifiers & kModifierSymbols[i].mask) == 0) continue;
        out += kModifierWords[i];
        out += '+';
    }
    out += key;
    if (key.empty() && !out.empty()) out.pop_back();
    return out;
}

std::optional<Shortcut> Shortcut::from(const KeyEvent& event) {
    Shortcut shortcut;
    shortcut.keyCode = event.keyCode;
    for (const ModifierSymbol& m : kModifierSymbols) {
        if (!event.flags.has(m.modifier)) continue;
        shortcut.modifiers |= m.mask;
        shortcut.label += m.symbol;
    }
    if (shortcut.modifiers == 0) return std::nullopt;
    shortcut.label += keyText(event);
    return shortcut;
}

}  // namespace lumora
