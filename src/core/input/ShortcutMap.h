#pragma once

#include <map>
#include <optional>
#include <string_view>

#include <nlohmann/json.hpp>

#include "input/Shortcut.h"
#include "input/ShortcutAction.h"
#include "platform/Defaults.h"

namespace lumora {

// The user's bindings; an action missing from the map has none. Ordered by the actions'
// declaration order, which is therefore also the order Hotkeys registers them in (and so
// decides which of two actions sharing a combination gets it).
using ShortcutMap = std::map<ShortcutAction, Shortcut>;

// Defaults key of the stored bindings: the UTF-8 JSON text of an object from action raw value
// to Shortcut, held as data.
inline constexpr std::string_view kShortcutsKey = "shortcuts";

// ⌃⌥⌘↑ brightnessUp, ⌃⌥⌘↓ brightnessDown, ⌃⌥⌘B dimToBlack, ⌃⌥⌘H toggleHiDPI.
ShortcutMap defaultShortcuts();

// The object form, members in map order.
nlohmann::ordered_json encodeShortcuts(const ShortcutMap& map);
// Decodes an object whose every member is a valid Shortcut; members not named after an action
// are then dropped. Any member that is not a valid Shortcut (even under an unknown name) fails
// the whole map, as does anything that is not an object. Never throws.
std::optional<ShortcutMap> decodeShortcuts(const nlohmann::json& json);

// The stored map; an empty stored object means no bindings at all. Absent, not data, not JSON
// or not decodable: the defaults (the bad data stays until the next save).
ShortcutMap loadShortcuts(const Defaults& defaults);
// Stores the map; when it cannot be encoded (a label that is not UTF-8) the key is removed.
void saveShortcuts(Defaults& defaults, const ShortcutMap& map);

}  // namespace lumora
