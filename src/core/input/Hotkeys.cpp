#include "input/Hotkeys.h"

#include <string>

namespace lumora {

Hotkeys::Hotkeys(Input& input, Scheduler& scheduler, Log& log)
    : input_(input), mainQueue_(scheduler.mainQueue()), log_(log) {
    input_.setHotKeyHandler([this](std::uint32_t id) { pressed(id); });
}

Hotkeys::~Hotkeys() {
    input_.setHotKeyHandler(nullptr);
    unregisterAll();
}

void Hotkeys::registerShortcuts(const ShortcutMap& map) {
    unregisterAll();
    if (input_.bindsByName()) {
        bindByName(map);
        return;
    }
    std::uint32_t id = 0;
    for (const auto& [action, shortcut] : map) {
        ++id;
        HotKeyRegistration r = input_.registerHotKey(shortcut.keyCode, shortcut.modifiers, id);
        if (r.status != 0 || r.handle == kNoHotKey) {
            log_.write("shortcut " + shortcut.label + " for " + std::string(rawValue(action)) +
                       " is taken by another app");
            continue;
        }
        refs_.push_back(r.handle);
        actions_[id] = action;
    }
}

void Hotkeys::bindByName(const ShortcutMap& map) {
    // Every action, bound or not: the desktop lets the user give keys to the others.
    std::vector<NamedShortcut> shortcuts;
    std::uint32_t id = 0;
    for (ShortcutAction action : kAllShortcutActions) {
        NamedShortcut named{std::string(rawValue(action)), std::string(title(action))};
        named.id = ++id;
        if (auto bound = map.find(action); bound != map.end()) {
            named.hasKey = true;
            named.keyCode = bound->second.keyCode;
            named.modifiers = bound->second.modifiers;
        }
        actions_[id] = action;
        shortcuts.push_back(std::move(named));
    }
    input_.bindByName(shortcuts);
}

void Hotkeys::pressed(std::uint32_t id) {
    auto found = actions_.find(id);
    if (found == actions_.end()) return;
    // Deferred so that the action runs outside the system's event dispatch.
    mainQueue_.post([this, alive = std::weak_ptr<const bool>(alive_), action = found->second] {
        if (alive.expired()) return;
        if (onAction) onAction(action);
    });
}

void Hotkeys::unregisterAll() {
    for (HotKeyHandle handle : refs_)
        input_.unregisterHotKey(handle);
    refs_.clear();
    actions_.clear();
}

}  // namespace lumora
