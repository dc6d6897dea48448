#include "input/ShortcutAction.h"

#include <ostream>

namespace lumora {

std::string_view rawValue(ShortcutAction action) {
    switch (action) {
        case ShortcutAction::brightnessUp:
            return "brightnessUp";
        case ShortcutAction::brightnessDown:
            return "brightnessDown";
        case ShortcutAction::dimToBlack:
            return "dimToBlack";
        case ShortcutAction::toggleBuiltin:
            return "toggleBuiltin";
        case ShortcutAction::toggleHiDPI:
            return "toggleHiDPI";
        case ShortcutAction::sleepDisplays:
            return "sleepDisplays";
    }
    return "brightnessUp";
}

std::optional<ShortcutAction> shortcutActionFromRaw(std::string_view raw) {
    for (ShortcutAction action : kAllShortcutActions) {
        if (rawValue(action) == raw) return action;
    }
    return std::nullopt;
}

std::string_view title(ShortcutAction action) {
    switch (action) {
        case ShortcutAction::brightnessUp:
            return "Ярче (монитор под курсором)";
        case ShortcutAction::brightnessDown:
            return "Темнее (монитор под курсором)";
        case ShortcutAction::dimToBlack:
            return "Погасить / вернуть монитор под курсором";
        case ShortcutAction::toggleBuiltin:
            return "Встроенный экран вкл/выкл";
        case ShortcutAction::toggleHiDPI:
            return "HiDPI вкл/выкл (монитор под курсором)";
        case ShortcutAction::sleepDisplays:
            return "Усыпить все экраны";
    }
    return "";
}

std::ostream& operator<<(std::ostream& out, ShortcutAction action) {
    return out << rawValue(action);
}

}  // namespace lumora
