#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "display/Displays.h"
#include "log/Log.h"
#include "platform/Defaults.h"
#include "platform/DisplayServer.h"
#include "platform/Scheduler.h"
#include "platform/VirtualDisplays.h"
#include "virtual/LMVirtualScreen.h"

namespace lumora {

// Sharp rendering for monitors the system drives only at 1x: a HiDPI virtual display whose
// point sizes derive from the monitor's native resolution, with the monitor mirroring it.
// The system renders at 2x into the virtual display and scales the result onto the monitor.
// Remembers which monitors the user switched on and brings their sessions back when they
// return. Main thread only.
class HiDPI {
  public:
    using PixelSize = std::pair<std::int64_t, std::int64_t>;  // (width, height)

    static constexpr const char* kEnabledKey = "hidpi.enabled";
    // Time for the system to publish the new virtual display before it can be mirrored.
    static constexpr double kMirrorDelay = 1.0;

    // Reads the remembered monitors; no sessions yet.
    HiDPI(Displays& displays, VirtualDisplays& virtualDisplays, Scheduler& scheduler,
          Defaults& defaults, Log& log);
    HiDPI(const HiDPI&) = delete;
    HiDPI& operator=(const HiDPI&) = delete;

    // True when a session exists afterwards. The monitor mirrors its virtual display
    // kMirrorDelay later.
    bool enable(DisplayID id);
    // Ends the session; with `remember` also forgets that the user wanted it.
    void disable(DisplayID id, bool remember);
    // Drops the sessions of monitors that went away and starts those of remembered monitors
    // that are online again.
    void reconcile();
    // Ends every session but keeps the user's choices for the next start.
    void stopAll();

    [[nodiscard]] bool isOn(DisplayID id) const;
    [[nodiscard]] std::optional<DisplayID> virtualFor(DisplayID id) const;
    // Monitor -> its virtual display, for every live session: the application hides the
    // backing displays and maps the pointer through this.
    [[nodiscard]] std::map<DisplayID, DisplayID> virtualByExternal() const;

    // "vendor-model-serial" in decimal: stays the same across reconnection, unlike the id.
    static std::string key(const DisplayServer& server, DisplayID id);
    // The largest pixel size among all the display's modes; the earlier wins a tie.
    static std::optional<PixelSize> nativeSize(const DisplayServer& server, DisplayID id);
    // The point sizes offered on the virtual display, largest first.
    static std::vector<PixelSize> pointModes(PixelSize native);

  private:
    struct Session {
        DisplayID external = 0;
        DisplayID virtualID = 0;
        std::unique_ptr<LMVirtualScreen> screen;  // keeps the virtual display alive
        // Tells this session from a later one on the same monitor, which may even get the
        // same virtual display id back.
        std::uint64_t number = 0;
    };

    std::unique_ptr<LMVirtualScreen> createScreen(DisplayID id, PixelSize native,
                                                  const std::vector<PixelSize>& modes,
                                                  const std::optional<DisplayMode>& current);
    void mirror(const std::string& sessionKey, std::uint64_t number, PixelSize native,
                std::int64_t formerWidth);
    void saveEnabled();

    Displays& displays_;
    VirtualDisplays& virtualDisplays_;
    Scheduler& scheduler_;
    Defaults& defaults_;
    Log& log_;
    std::set<std::string> enabledKeys_;
    std::map<std::string, Session> sessions_;
    std::uint64_t sessionsStarted_ = 0;
    // Delayed steps hold this weakly and do nothing once the manager is gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace lumora
