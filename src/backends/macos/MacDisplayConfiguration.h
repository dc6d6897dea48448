#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <vector>

#include "CFRef.h"
#include "DisplayEnableSwitch.h"
#include "platform/DisplayServer.h"

namespace lumora::mac {

// One CoreGraphics configuration transaction. Dropped without complete() it is cancelled.
class MacDisplayConfiguration final : public DisplayConfiguration {
  public:
    MacDisplayConfiguration(CGDisplayConfigRef config, const DisplayServer& displays,
                            const DisplayEnableSwitch& enableSwitch);
    ~MacDisplayConfiguration() override;
    MacDisplayConfiguration(const MacDisplayConfiguration&) = delete;
    MacDisplayConfiguration& operator=(const MacDisplayConfiguration&) = delete;

    ConfigStatus setMode(DisplayID id, std::int32_t modeID) override;
    ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override;
    ConfigStatus setMain(DisplayID id) override;
    ConfigStatus setMirror(DisplayID id, DisplayID target) override;
    ConfigStatus setEnabled(DisplayID id, bool enabled) override;
    ConfigStatus complete(ConfigureOption option) override;
    void cancel() override;

  private:
    CGDisplayConfigRef config_ = nullptr;  // nothing once completed or cancelled
    const DisplayServer& displays_;
    const DisplayEnableSwitch& enableSwitch_;
    // The mode arrays stay alive until the transaction ends: it refers to their modes.
    std::vector<CFRef<CFArrayRef>> modesInUse_;
};

}  // namespace lumora::mac
