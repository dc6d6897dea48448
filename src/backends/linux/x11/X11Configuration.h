#pragma once

#include <memory>
#include <vector>

#include "platform/DisplayServer.h"
#include "x11/LayoutPlan.h"

namespace lumora::lx {

class X11DisplayServer;

// One RandR transaction: each change is checked against the displays when it is queued and
// all are applied together under a server grab at completion.
class X11Configuration final : public DisplayConfiguration {
  public:
    X11Configuration(X11DisplayServer& server, std::weak_ptr<bool> alive);

    ConfigStatus setMode(DisplayID id, std::int32_t modeID) override;
    ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override;
    ConfigStatus setMain(DisplayID id) override;
    ConfigStatus setMirror(DisplayID id, DisplayID target) override;
    ConfigStatus setEnabled(DisplayID id, bool enabled) override;
    // Both options act alike: an X server keeps an arrangement until it is changed and stores
    // none, and the desktop session restores its own at the next login.
    ConfigStatus complete(ConfigureOption option) override;
    void cancel() override;

  private:
    ConfigStatus queue(bool valid, ConfigChange change);

    X11DisplayServer& server_;
    std::weak_ptr<bool> alive_;
    std::vector<ConfigChange> changes_;
};

}  // namespace lumora::lx
