#pragma once

#include <QString>
#include <Qt>
#include <cstdint>
#include <optional>

#include "input/Shortcut.h"

class QKeyEvent;

namespace lumora::ui {

// The hardware key code the core uses (the macOS virtual key code) for a Qt key; nothing for
// a key without one, modifier keys included.
[[nodiscard]] std::optional<std::uint32_t> hardwareKeyCode(int qtKey);

// Qt's modifiers as the core's. On macOS Qt reports ⌘ as Control and ⌃ as Meta
// (`commandIsControl`); elsewhere Ctrl is control, Alt option, Shift shift and Meta (the
// Super/Windows key) command.
[[nodiscard]] ModifierFlags modifierFlags(Qt::KeyboardModifiers modifiers, bool commandIsControl);

// What the key types with no modifier held: the character for letters, digits and
// punctuation ("a", "5", "/"), the key's name for the rest ("F7", "Home"), empty for keys
// that have neither.
[[nodiscard]] QString charactersIgnoringModifiers(int qtKey);

// A key-down as the core sees it; nothing for keys the core has no code for.
// `nativeVirtualKey` is used as it is where the platform reports hardware key codes (macOS).
[[nodiscard]] std::optional<KeyEvent> keyEventFrom(int qtKey, Qt::KeyboardModifiers modifiers,
                                                   std::uint32_t nativeVirtualKey,
                                                   bool macPlatform);
[[nodiscard]] std::optional<KeyEvent> keyEventFrom(const QKeyEvent& event);

}  // namespace lumora::ui
