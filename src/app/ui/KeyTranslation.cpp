#include "KeyTranslation.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <utility>

#include "input/KeyCodes.h"

namespace lumora::ui {

namespace {

// Qt key -> macOS virtual key code (the ANSI layout's positions, as the keyboard reports them).
constexpr std::pair<int, std::uint32_t> kKeyCodes[] = {
    {Qt::Key_A, kKeyA},
    {Qt::Key_S, 1},
    {Qt::Key_D, 2},
    {Qt::Key_F, 3},
    {Qt::Key_H, kKeyH},
    {Qt::Key_G, 5},
    {Qt::Key_Z, 6},
    {Qt::Key_X, 7},
    {Qt::Key_C, 8},
    {Qt::Key_V, 9},
    {Qt::Key_B, kKeyB},
    {Qt::Key_Q, 12},
    {Qt::Key_W, 13},
    {Qt::Key_E, 14},
    {Qt::Key_R, 15},
    {Qt::Key_Y, 16},
    {Qt::Key_T, 17},
    {Qt::Key_1, 18},
    {Qt::Key_2, 19},
    {Qt::Key_3, 20},
    {Qt::Key_4, 21},
    {Qt::Key_6, 22},
    {Qt::Key_5, 23},
    {Qt::Key_Equal, 24},
    {Qt::Key_9, 25},
    {Qt::Key_7, 26},
    {Qt::Key_Minus, 27},
    {Qt::Key_8, 28},
    {Qt::Key_0, 29},
    {Qt::Key_BracketRight, 30},
    {Qt::Key_O, 31},
    {Qt::Key_U, 32},
    {Qt::Key_BracketLeft, 33},
    {Qt::Key_I, 34},
    {Qt::Key_P, 35},
    {Qt::Key_Return, kKeyReturn},
    {Qt::Key_L, 37},
    {Qt::Key_J, 38},
    {Qt::Key_Apostrophe, 39},
    {Qt::Key_K, 40},
    {Qt::Key_Semicolon, 41},
    {Qt::Key_Backslash, 42},
    {Qt::Key_Comma, 43},
    {Qt::Key_Slash, 44},
    {Qt::Key_N, 45},
    {Qt::Key_M, 46},
    {Qt::Key_Period, 47},
    {Qt::Key_Tab, 48},
    {Qt::Key_Space, kKeySpace},
    {Qt::Key_QuoteLeft, 50},
    {Qt::Key_Backspace, kKeyDelete},
    {Qt::Key_Escape, kKeyEscape},
    {Qt::Key_Enter, 76},
    {Qt::Key_F5, kKeyF5},
    {Qt::Key_F6, kKeyF6},
    {Qt::Key_F7, kKeyF7},
    {Qt::Key_F3, kKeyF3},
    {Qt::Key_F8, 100},
    {Qt::Key_F9, 101},
    {Qt::Key_F11, 103},
    {Qt::Key_F10, 109},
    {Qt::Key_F12, 111},
    {Qt::Key_Home, 115},
    {Qt::Key_PageUp, 116},
    {Qt::Key_Delete, kKeyDelete},  // "⌫ — очистить" must work from either key
    {Qt::Key_F4, kKeyF4},
    {Qt::Key_End, 119},
    {Qt::Key_F2, kKeyF2},
    {Qt::Key_PageDown, 121},
    {Qt::Key_F1, kKeyF1},
    {Qt::Key_Left, kKeyLeftArrow},
    {Qt::Key_Right, kKeyRightArrow},
    {Qt::Key_Down, kKeyDownArrow},
    {Qt::Key_Up, kKeyUpArrow},
};

// Qt keys below this are Unicode code points; above are named keys (F1, Home, ...).
constexpr int kFirstNamedKey = 0x01000000;

// With Shift held, X11 and Wayland report the shifted symbol of a US layout key; the
// hardware key and its unmodified character are those of the key underneath.
constexpr std::pair<int, int> kShiftedKeys[] = {
    {Qt::Key_Exclam, Qt::Key_1},
    {Qt::Key_At, Qt::Key_2},
    {Qt::Key_NumberSign, Qt::Key_3},
    {Qt::Key_Dollar, Qt::Key_4},
    {Qt::Key_Percent, Qt::Key_5},
    {Qt::Key_AsciiCircum, Qt::Key_6},
    {Qt::Key_Ampersand, Qt::Key_7},
    {Qt::Key_Asterisk, Qt::Key_8},
    {Qt::Key_ParenLeft, Qt::Key_9},
    {Qt::Key_ParenRight, Qt::Key_0},
    {Qt::Key_Underscore, Qt::Key_Minus},
    {Qt::Key_Plus, Qt::Key_Equal},
    {Qt::Key_BraceLeft, Qt::Key_BracketLeft},
    {Qt::Key_BraceRight, Qt::Key_BracketRight},
    {Qt::Key_Bar, Qt::Key_Backslash},
    {Qt::Key_Colon, Qt::Key_Semicolon},
    {Qt::Key_QuoteDbl, Qt::Key_Apostrophe},
    {Qt::Key_Less, Qt::Key_Comma},
    {Qt::Key_Greater, Qt::Key_Period},
    {Qt::Key_Question, Qt::Key_Slash},
    {Qt::Key_AsciiTilde, Qt::Key_QuoteLeft},
    {Qt::Key_Backtab, Qt::Key_Tab},
};

// Keys that only modify others: the keyboard reports them, but they are never a shortcut's
// key (the system's key-down monitor does not even see them).
bool isModifierKey(int qtKey) {
    switch (qtKey) {
        case Qt::Key_Shift:
        case Qt::Key_Control:
        case Qt::Key_Meta:
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
        case Qt::Key_CapsLock:
        case Qt::Key_Super_L:
        case Qt::Key_Super_R:
        case Qt::Key_Hyper_L:
        case Qt::Key_Hyper_R:
        case Qt::Key_unknown:
            return true;
        default:
            return false;
    }
}

int unshifted(int qtKey) {
    for (const auto& [shifted, key] : kShiftedKeys) {
        if (shifted == qtKey) return key;
    }
    return qtKey;
}

}  // namespace

std::optional<std::uint32_t> hardwareKeyCode(int qtKey) {
    qtKey = unshifted(qtKey);
    for (const auto& [key, code] : kKeyCodes) {
        if (key == qtKey) return code;
    }
    return std::nullopt;
}

ModifierFlags modifierFlags(Qt::KeyboardModifiers modifiers, bool commandIsControl) {
    ModifierFlags flags;
    std::uint32_t bits = 0;
    const auto hold = [&bits](Modifier m) { bits |= static_cast<std::uint32_t>(m); };
    if (modifiers & Qt::ShiftModifier) hold(Modifier::shift);
    if (modifiers & Qt::AltModifier) hold(Modifier::option);
    if (modifiers & Qt::ControlModifier)
        hold(commandIsControl ? Modifier::command : Modifier::control);
    if (modifiers & Qt::MetaModifier)
        hold(commandIsControl ? Modifier::control : Modifier::command);
    return ModifierFlags::fromBits(bits);
}

QString charactersIgnoringModifiers(int qtKey) {
    qtKey = unshifted(qtKey);
    if (qtKey <= 0 || isModifierKey(qtKey)) return {};
    if (qtKey < kFirstNamedKey) {
        const auto codePoint = static_cast<char32_t>(qtKey);
        return QString::fromUcs4(&codePoint, 1).toLower();
    }
    return QKeySequence(qtKey).toString(QKeySequence::PortableText);
}

std::optional<KeyEvent> keyEventFrom(int qtKey, Qt::KeyboardModifiers modifiers,
                                     std::uint32_t nativeVirtualKey, bool macPlatform) {
    if (isModifierKey(qtKey)) return std::nullopt;
    std::optional<std::uint32_t> code = macPlatform && nativeVirtualKey != 0
                                            ? std::optional(nativeVirtualKey)
                                            : hardwareKeyCode(qtKey);
    if (!code) return std::nullopt;
    KeyEvent event;
    event.keyCode = *code;
    event.flags = modifierFlags(modifiers, macPlatform);
    event.charactersIgnoringModifiers = charactersIgnoringModifiers(qtKey).toStdString();
    return event;
}

std::optional<KeyEvent> keyEventFrom(const QKeyEvent& event) {
#ifdef Q_OS_MACOS
    constexpr bool kMac = true;
#else
    constexpr bool kMac = false;
#endif
    return keyEventFrom(event.key(), event.modifiers(), event.nativeVirtualKey(), kMac);
}

}  // namespace lumora::ui
