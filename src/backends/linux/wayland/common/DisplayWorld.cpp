#include "wayland/common/DisplayWorld.h"

#include <algorithm>

namespace lumora::wl {

std::vector<std::pair<DisplayID, DisplayChange>> diffWorlds(const DisplayWorld& before,
                                                            const DisplayWorld& after) {
    auto find = [](const DisplayWorld& world, DisplayID id) {
        return std::find_if(world.begin(), world.end(),
                            [id](const auto& entry) { return entry.first == id; });
    };
    std::vector<std::pair<DisplayID, DisplayChange>> changes;
    for (const auto& [id, facts] : after) {
        const auto old = find(before, id);
        if (old == before.end()) {
            changes.emplace_back(id, DisplayChange::added);
        } else if (old->second != facts) {
            changes.emplace_back(id, DisplayChange::changed);
        }
    }
    for (const auto& [id, facts] : before) {
        if (find(after, id) == after.end()) changes.emplace_back(id, DisplayChange::removed);
    }
    return changes;
}

int ReconfigurationHandlers::add(ReconfigurationHandler handler) {
    std::lock_guard lock(mutex_);
    const int registration = next_++;
    handlers_.emplace(registration, std::move(handler));
    return registration;
}

void ReconfigurationHandlers::remove(int registration) {
    std::lock_guard lock(mutex_);
    handlers_.erase(registration);
}

void ReconfigurationHandlers::deliver(
    const std::vector<std::pair<DisplayID, DisplayChange>>& changes) {
    if (changes.empty()) return;
    std::vector<ReconfigurationHandler> handlers;
    {
        // Copied so that a handler may (un)register without deadlocking.
        std::lock_guard lock(mutex_);
        for (const auto& entry : handlers_)
            handlers.push_back(entry.second);
    }
    for (const auto& [id, change] : changes) {
        for (const auto& handler : handlers)
            handler(id, change);
    }
}

std::int32_t ModeHandles::handle(DisplayID id, const std::string& key) {
    auto& keys = byKey_[id];
    if (const auto found = keys.find(key); found != keys.end()) return found->second;
    // Handles start at 1, so 0 never names a mode.
    const auto handle = static_cast<std::int32_t>(keys.size() + 1);
    keys.emplace(key, handle);
    byHandle_[id].emplace(handle, key);
    return handle;
}

std::optional<std::string> ModeHandles::key(DisplayID id, std::int32_t handle) const {
    const auto display = byHandle_.find(id);
    if (display == byHandle_.end()) return std::nullopt;
    const auto found = display->second.find(handle);
    if (found == display->second.end()) return std::nullopt;
    return found->second;
}

}  // namespace lumora::wl
