#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "platform/ModifierFlags.h"

namespace lumora {

// A key-down event as the keyboard reports it, independent of the platform's event type.
struct KeyEvent {
    std::uint32_t keyCode = 0;  // hardware virtual key code (input/KeyCodes.h)
    ModifierFlags flags;
    std::string charactersIgnoringModifiers;  // UTF-8; empty when the key types nothing
};

// One key combination bound to an action.
struct Shortcut {
    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;  // hot-key mask: command 0x100, shift 0x200, option 0x800,
                                  // control 0x1000
    std::string label;            // built once when recorded and stored with it, never recomputed

    friend bool operator==(const Shortcut&, const Shortcut&) = default;

    // Nothing unless shift, control, option or command is held: plain keys are never bound.
    // The label lists the modifiers as ⌃⌥⇧⌘ whatever order they were pressed in, then the key.
    static std::optional<Shortcut> from(const KeyEvent& event);

    // {"keyCode":…,"modifiers":…,"label":"…"} in that order.
    [[nodiscard]] nlohmann::ordered_json toJson() const;
    // Strict: all three keys, the numbers JSON integers within 0…2^32-1, the label a string.
    // Unknown keys are ignored. Never throws.
    static std::optional<Shortcut> fromJson(const nlohmann::json& json);
};

std::ostream& operator<<(std::ostream& out, const Shortcut& shortcut);

// How key combinations are written for the user: the Mac's symbols (⌃⌥⇧⌘B) or the words of
// the other systems (Ctrl+Alt+Shift+Super+B).
enum class KeyNames { symbols, words };

// The shortcut as the user reads it. The stored label (symbols) as it is; in words, the held
// modifiers in the order Ctrl, Alt, Shift, Super, then the key, joined by "+".
[[nodiscard]] std::string shownLabel(const Shortcut& shortcut, KeyNames names);

}  // namespace lumora
