#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "input/ShortcutAction.h"
#include "input/ShortcutMap.h"
#include "log/Log.h"
#include "platform/Input.h"
#include "platform/Scheduler.h"

namespace lumora {

// The global hot-key registry: registers the bound shortcuts with the system so that they work
// while another application is in front, and turns a press into a call of onAction on the main
// queue. Main thread only.
class Hotkeys {
  public:
    // Installs the press handler on input. input, scheduler and log must outlive the registry.
    Hotkeys(Input& input, Scheduler& scheduler, Log& log);
    // Releases every registration and the press handler. A press already queued for delivery
    // is dropped.
    ~Hotkeys();
    Hotkeys(const Hotkeys&) = delete;
    Hotkeys& operator=(const Hotkeys&) = delete;

    // Replaces all current registrations by the map's, in map order, with ids 1, 2, 3, ...
    // assigned afresh; an id is used up even when its registration is refused. A refusal is
    // logged and skipped. An empty map leaves nothing registered. Where the desktop binds by
    // name, every action goes to it at once, with the map's keys as the preferred ones.
    void registerShortcuts(const ShortcutMap& map);

    // Called on the main queue, after the press handler has returned.
    std::function<void(ShortcutAction)> onAction;

  private:
    void bindByName(const ShortcutMap& map);
    void pressed(std::uint32_t id);
    void unregisterAll();

    Input& input_;
    WorkQueue& mainQueue_;
    Log& log_;
    std::vector<HotKeyHandle> refs_;  // one per registration the system accepted
    std::map<std::uint32_t, ShortcutAction> actions_;
    // Queued deliveries hold this weakly and do nothing once the registry is gone.
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace lumora
