#include "input/ShortcutMap.h"

#include <string>
#include <utility>

#include "base/Utf8.h"
#include "input/KeyCodes.h"

namespace lumora {

namespace {

// Control + option + command: a combination no application uses for itself by convention.
constexpr std::uint32_t kDefaultMask = kMaskControl | kMaskOption | kMaskCommand;

}  // namespace

ShortcutMap defaultShortcuts() {
    return {
        {ShortcutAction::brightnessUp, {kKeyUpArrow, kDefaultMask, "⌃⌥⌘↑"}},
        {ShortcutAction::brightnessDown, {kKeyDownArrow, kDefaultMask, "⌃⌥⌘↓"}},
        {ShortcutAction::dimToBlack, {kKeyB, kDefaultMask, "⌃⌥⌘B"}},
        {ShortcutAction::toggleHiDPI, {kKeyH, kDefaultMask, "⌃⌥⌘H"}},
    };
}

nlohmann::ordered_json encodeShortcuts(const ShortcutMap& map) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (const auto& [action, shortcut] : map) {
        json[std::string(rawValue(action))] = shortcut.toJson();
    }
    return json;
}

std::optional<ShortcutMap> decodeShortcuts(const nlohmann::json& json) {
    if (!json.is_object()) return std::nullopt;
    ShortcutMap map;
    for (const auto& [name, value] : json.items()) {
        auto shortcut = Shortcut::fromJson(value);
        if (!shortcut) return std::nullopt;
        if (auto action = shortcutActionFromRaw(name)) map[*action] = std::move(*shortcut);
    }
    return map;
}

ShortcutMap loadShortcuts(const Defaults& defaults) {
    auto json = defaults.jsonData(kShortcutsKey);
    if (!json) return defaultShortcuts();
    auto map = decodeShortcuts(*json);
    if (!map) return defaultShortcuts();
    return *map;
}

void saveShortcuts(Defaults& defaults, const ShortcutMap& map) {
    for (const auto& [action, shortcut] : map) {
        if (!isValidUtf8(shortcut.label)) {
            defaults.remove(kShortcutsKey);
            return;
        }
    }
    std::string text = encodeShortcuts(map).dump();
    defaults.setData(kShortcutsKey, Defaults::Bytes(text.begin(), text.end()));
}

}  // namespace lumora
