#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayServer.h"

namespace lumora::wl {

// The online displays as one comparable picture: per display, in the server's order, a text
// that holds everything visible about it (mode, place, mirroring, main flag, ...).
using DisplayWorld = std::vector<std::pair<DisplayID, std::string>>;

// One burst of compositor changes as the port reports it: per display at most one event,
// the new world's displays first in its order, then the displays that left.
std::vector<std::pair<DisplayID, DisplayChange>> diffWorlds(const DisplayWorld& before,
                                                            const DisplayWorld& after);

// The registered reconfiguration handlers of one display server.
class ReconfigurationHandlers {
  public:
    int add(ReconfigurationHandler handler);
    void remove(int registration);
    // Calls every handler for every change, in order. Handlers may add or remove handlers.
    void deliver(const std::vector<std::pair<DisplayID, DisplayChange>>& changes);

  private:
    std::mutex mutex_;
    int next_ = 1;
    std::map<int, ReconfigurationHandler> handlers_;
};

// Hands out the port's int32 mode handles for the compositor's own mode keys (Mutter's mode id
// strings, wlroots mode sizes): the same key of the same display keeps its handle for the life
// of the server, so a handle taken before a reconfiguration still means the same mode after it.
class ModeHandles {
  public:
    std::int32_t handle(DisplayID id, const std::string& key);
    // Nothing for a handle this display never had.
    [[nodiscard]] std::optional<std::string> key(DisplayID id, std::int32_t handle) const;

  private:
    std::map<DisplayID, std::map<std::string, std::int32_t>> byKey_;
    std::map<DisplayID, std::map<std::int32_t, std::string>> byHandle_;
};

}  // namespace lumora::wl
