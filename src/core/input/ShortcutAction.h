#pragma once

#include <array>
#include <iosfwd>
#include <optional>
#include <string_view>

namespace lumora {

// The fixed actions a global shortcut can be bound to. The raw values are the names stored in
// the "shortcuts" setting and used in log lines.
enum class ShortcutAction {
    brightnessUp,
    brightnessDown,
    dimToBlack,
    toggleBuiltin,
    toggleHiDPI,
    sleepDisplays,
};

// Every action in declaration order: the order the keys section lists them in.
inline constexpr std::array kAllShortcutActions{
    ShortcutAction::brightnessUp,  ShortcutAction::brightnessDown, ShortcutAction::dimToBlack,
    ShortcutAction::toggleBuiltin, ShortcutAction::toggleHiDPI,    ShortcutAction::sleepDisplays,
};

std::string_view rawValue(ShortcutAction action);
// Exactly the six raw values; anything else yields nothing.
std::optional<ShortcutAction> shortcutActionFromRaw(std::string_view raw);
// The Russian title the keys section shows for the action.
std::string_view title(ShortcutAction action);

std::ostream& operator<<(std::ostream& out, ShortcutAction action);

}  // namespace lumora
