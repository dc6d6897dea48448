#pragma once

#include <map>
#include <mutex>

#include "DisplayEnableSwitch.h"
#include "decode/GammaMemory.h"
#include "platform/DisplayServer.h"

namespace lumora::mac {

// The displays as CoreGraphics sees them; screens and the pointer come from AppKit.
class MacDisplayServer final : public DisplayServer {
  public:
    explicit MacDisplayServer(const DisplayEnableSwitch& enableSwitch);
    ~MacDisplayServer() override;
    MacDisplayServer(const MacDisplayServer&) = delete;
    MacDisplayServer& operator=(const MacDisplayServer&) = delete;

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override;
    [[nodiscard]] DisplayID mainDisplay() const override;
    [[nodiscard]] bool isBuiltin(DisplayID id) const override;
    [[nodiscard]] bool isAsleep(DisplayID id) const override;
    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override;
    [[nodiscard]] std::uint32_t model(DisplayID id) const override;
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override;
    [[nodiscard]] double rotation(DisplayID id) const override;
    [[nodiscard]] Rect bounds(DisplayID id) const override;
    [[nodiscard]] Size physicalSize(DisplayID id) const override;
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID id) const override;
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID id) const override;
    [[nodiscard]] DisplayID mirrorSource(DisplayID id) const override;

    std::unique_ptr<DisplayConfiguration> beginConfiguration() override;

    [[nodiscard]] std::size_t gammaRampSize(DisplayID id) const override;
    ConfigStatus setGamma(DisplayID id, const GammaRamps& ramps) override;
    void resetGamma(DisplayID id) override;

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] std::optional<Point> pointerLocation() const override;

    int addReconfigurationHandler(ReconfigurationHandler handler) override;
    void removeReconfigurationHandler(int registration) override;

  private:
    static void onReconfiguration(CGDirectDisplayID display, CGDisplayChangeSummaryFlags flags,
                                  void* userInfo);
    void deliver(DisplayID id, DisplayChange change);
    static CGError loadRamps(DisplayID id, const GammaRamps& ramps);

    const DisplayEnableSwitch& enableSwitch_;
    GammaMemory gamma_;
    // The callback may arrive on any thread; handlers are added on the main thread.
    std::mutex handlersMutex_;
    std::map<int, ReconfigurationHandler> handlers_;
    int nextRegistration_ = 1;
    bool callbackRegistered_ = false;
};

}  // namespace lumora::mac
